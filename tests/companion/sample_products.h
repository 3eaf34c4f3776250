#pragma once

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "companion/cosar_writer.h"
#include "gridkit/plugin.h"
#include "gridkit/samples.h"
#include "support/scratch_folder.h"
#include "tools/simulate/product.h"

// The plug-in and its companion as they are shipped, and products to try them on.
class SampleProducts {
 public:
  SampleProducts() : plugin(gridkit::Plugin::load(TSX_PLUGIN)) {}

  // A simulated product, as the simulator writes it.
  std::string simulated(simulate::Variant variant, std::int32_t lines, std::int32_t samples,
                        const std::vector<std::string>& polarisations = {"HH"},
                        bool empty = false) const {
    simulate::Options options;
    options.empty_images = empty;
    options.variant = variant;
    options.lines = lines;
    options.samples = samples;
    options.polarisations = polarisations;
    options.profile = simulate::Profile::minimal;
    options.targets = 1;
    return simulate::write_product_folder(options, (scratch / std::to_string(++made_)).string());
  }

  // The same with a complex image of these bursts in place of the simulator's. The annotation tells
  // the first burst's size, as far as the simulator makes images so small.
  std::string with_bursts(const std::vector<BurstLayout>& bursts) const {
    const std::string annotation = simulated(simulate::Variant::ssc, size_of(bursts.front().lines),
                                             size_of(bursts.front().samples), {"HH"}, true);
    write_cosar(image_of(annotation), bursts);
    return annotation;
  }

  // The first image file of a product, one folder below its annotation.
  static std::filesystem::path image_of(const std::string& annotation) {
    const auto folder = std::filesystem::path(annotation).parent_path() / "IMAGEDATA";
    for (const auto& entry : std::filesystem::directory_iterator(folder)) return entry.path();
    throw std::runtime_error(folder.string() + ": no image");
  }

  gridkit::Samples open(const std::string& annotation) const {
    return gridkit::Samples::open(*plugin, annotation);
  }

  std::shared_ptr<gridkit::Plugin> plugin;
  ScratchFolder scratch;

 private:
  static std::int32_t size_of(std::uint32_t size) {
    return std::max(static_cast<std::int32_t>(size), 64);
  }

  mutable int made_ = 0;
};
