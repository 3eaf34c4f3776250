// Different products on different threads, through the plug-in as it is shipped. Under
// ThreadSanitizer it shows that nothing is shared but what is guarded; the run counters alone are
// not, see record/run_counters.h.

#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "gridkit/image_reader.h"
#include "gridkit/plugin.h"
#include "gridkit/preference.h"
#include "gridkit/product.h"
#include "tests/support/scratch_folder.h"
#include "tools/simulate/product.h"

namespace {

using simulate::Variant;

constexpr std::int32_t size = 150;
constexpr int lives = 12;

// All that a host gets of a product.
struct Told {
  std::vector<std::string> layers;
  std::vector<std::vector<std::uint16_t>> images;
  std::vector<std::string> texts;

  friend bool operator==(const Told&, const Told&) = default;
};

void read_layer(const gridkit::Product& product, const std::string& name, Told& told) {
  {
    const gridkit::Layer layer = product.open_layer(name);
    if (const auto info = layer.map_info()) {
      told.texts.push_back(info->projection + ' ' + info->units);
    }
    if (const auto projection = layer.map_projection()) told.texts.push_back(projection->name);
  }
  told.images.emplace_back();
  const gridkit::Window whole{0, 0, size, size};
  const auto missing = gridkit::read_window(
      product, name, whole, [&](std::span<const std::uint16_t> pixels, std::int32_t) {
        told.images.back().insert(told.images.back().end(), pixels.begin(), pixels.end());
      });
  told.texts.push_back(name + ": " + std::to_string(missing.size()) + " parts missing");
}

Told read_whole(gridkit::Plugin& plugin, const std::string& path) {
  Told told;
  told.texts.push_back(plugin.identify(path) ? "recognised" : "foreign");
  const gridkit::Product product = plugin.open(path);
  told.layers = product.layer_names();
  for (const std::string& name : told.layers) read_layer(product, name, told);
  for (const std::string& name : product.data_names()) {
    const auto data = product.read_data(name);
    told.texts.push_back(name + data->type + data->dictionary);
  }
  return told;
}

class Threads : public testing::Test {
 protected:
  void SetUp() override { plugin = gridkit::Plugin::load(TSX_PLUGIN); }

  std::string make(Variant variant, std::uint64_t seed) const {
    simulate::Options options;
    options.variant = variant;
    options.seed = seed;
    options.lines = options.samples = size;
    options.profile = simulate::Profile::minimal;
    options.targets = 1;
    return simulate::write_product_folder(options, scratch / std::to_string(seed));
  }

  // Reads each product again and again on a thread of its own; how many readings were not what one
  // thread alone had got.
  int differences(const std::vector<std::string>& paths) {
    std::vector<Told> expected;
    for (const std::string& path : paths) expected.push_back(read_whole(*plugin, path));
    std::atomic<int> different = 0;
    std::vector<std::thread> threads;
    for (std::size_t i = 0; i < paths.size(); ++i) {
      threads.emplace_back([&, i] {
        for (int life = 0; life < lives; ++life) {
          if (read_whole(*plugin, paths[i]) != expected[i]) ++different;
        }
      });
    }
    for (std::thread& thread : threads) thread.join();
    return different;
  }

  const ScratchFolder scratch;
  std::shared_ptr<gridkit::Plugin> plugin;
};

TEST_F(Threads, AComplexAndADetectedProductSideBySide) {
  EXPECT_EQ(differences({make(Variant::ssc, 1), make(Variant::mgd, 2)}), 0);
}

TEST_F(Threads, TwoProductsOnMapsSideBySide) {
  EXPECT_EQ(differences({make(Variant::gec, 1), make(Variant::eec, 2)}), 0);
}

TEST_F(Threads, TailsAreReadWithoutHinderingEachOther) {
  EXPECT_EQ(differences({make(Variant::ssc, 1), make(Variant::ssc, 2)}), 0);
  EXPECT_EQ(gkp_GetNumberPreference("import", "default_block_size", -1, nullptr), -1)
      << "the block size is as it was before";
}

}  // namespace
