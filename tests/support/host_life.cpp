#include "support/host_life.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <new>
#include <optional>
#include <set>
#include <span>

#include "gridkit/image_reader.h"
#include "gridkit/product.h"
#include "tools/simulate/product.h"

namespace {

using gridkit::Layer;
using gridkit::Product;

constexpr std::int32_t size = 70;  // lines and samples

// FNV-1a, 64 bits.
class CheckSum {
 public:
  void add(std::span<const std::byte> bytes) {
    for (const std::byte b : bytes) {
      value_ = (value_ ^ static_cast<std::uint8_t>(b)) * 0x100000001B3U;
    }
  }
  std::string text() const { return std::to_string(value_); }

 private:
  std::uint64_t value_ = 0xCBF29CE484222325U;
};

// Every digit of a number, in every locale.
std::string in_full(double value) {
  std::array<char, 32> text;
  return {text.data(), std::to_chars(text.data(), text.data() + text.size(), value).ptr};
}

std::string joined(const std::vector<std::string>& texts) {
  std::string all;
  for (const std::string& text : texts) all += text + ' ';
  return all;
}

class Life {
 public:
  Life(const std::shared_ptr<gridkit::Plugin>& plugin, const std::string& path,
       const std::function<long()>& watched)
      : plugin_(plugin), path_(path), watched_(watched) {}

  void live() {
    step("identify", [this] {
      const auto title = plugin_->identify(path_);
      return title ? std::to_string(*title) : "none";
    });
    step("open", [this] {
      product_.emplace(plugin_->open(path_));
      return product_->title();
    });
    if (!product_) return;
    step("open again", [this] { return plugin_->open(path_).title(); });
    std::vector<std::string> layers;
    step("names", [&] { return joined(layers = product_->layer_names()); });
    std::vector<std::string> data;
    step("data names", [&] { return joined(data = product_->data_names()); });
    for (const std::string& name : data) step(name, [&] { return data_sum(name); });
    for (const std::string& name : layers) read_layer(name);
    step("close", [this] {
      product_.reset();
      return std::string("closed");
    });
  }

  std::vector<HostStep> steps;

 private:
  void step(const std::string& name, const std::function<std::string()>& action) {
    steps.push_back({name, "no memory", gke_SeverityWarning});
    try {
      steps.back().outcome = action();
    } catch (const gridkit::Error& error) {
      steps.back().outcome = std::string("error: ") + error.what();
    } catch (const std::bad_alloc&) {
      // What stands there already.
    }
    steps.back().calls = watched_();
  }

  std::string data_sum(const std::string& name) const {
    const auto data = product_->read_data(name);
    if (!data) return "nothing";
    CheckSum sum;
    sum.add(data->bytes);
    sum.add(std::as_bytes(std::span(data->dictionary)));
    return data->type + ' ' + sum.text();
  }

  void read_layer(const std::string& name) {
    step(name + " pixels", [&] { return pixel_sum(name); });
    std::optional<Layer> layer;
    step(name + " open", [&] {
      layer.emplace(product_->open_layer(name));
      return layer->pixel_type() + ' ' + std::to_string(layer->block_width());
    });
    if (!layer) return;
    step(name + " block pixels", [&] { return block_sum(*layer); });
    step(name + " map", [&] {
      const auto map = layer->map_info();
      if (!map) return std::string("none");
      return map->projection + ' ' + map->units + ' ' + in_full(map->upper_left[0]) + ' ' +
             in_full(map->pixel_size[1]);
    });
    step(name + " projection", [&] {
      const auto projection = layer->map_projection();
      if (!projection) return std::string("none");
      std::string told = projection->name;
      for (const auto& value : projection->values) told += ' ' + value.value_or("-");
      return told;
    });
    step(name + " close", [&] {
      layer.reset();
      return std::string("closed");
    });
  }

  // Through the plug-in's own block read, which whole complex layers do not take.
  static std::string block_sum(const Layer& layer) {
    CheckSum sum;
    std::vector<std::uint16_t> pixels;
    if (!layer.read_block(0, 0, pixels)) return "no data";
    sum.add(std::as_bytes(std::span(pixels)));
    return sum.text();
  }

  std::string pixel_sum(const std::string& name) const {
    CheckSum sum;
    const gridkit::Window window{0, 0, size, size};
    const auto missing = gridkit::read_window(
        *product_, name, window, [&](std::span<const std::uint16_t> pixels, std::int32_t) {
          sum.add(std::as_bytes(pixels));
        });
    return std::to_string(missing.size()) + " gaps, " + sum.text();
  }

  const std::shared_ptr<gridkit::Plugin>& plugin_;
  const std::string& path_;
  const std::function<long()>& watched_;
  std::optional<Product> product_;
};

}  // namespace

std::vector<HostStep> host_life(const std::shared_ptr<gridkit::Plugin>& plugin,
                                const std::string& path, const std::function<long()>& watched) {
  Life life(plugin, path, watched);
  life.live();
  return life.steps;
}

const HostStep* step_of_call(const std::vector<HostStep>& steps, long call) {
  const auto found = std::find_if(steps.begin(), steps.end(),
                                  [&](const HostStep& step) { return call <= step.calls; });
  return found == steps.end() ? nullptr : &*found;
}

testing::AssertionResult is_like(const std::vector<HostStep>& steps,
                                 const std::vector<HostStep>& whole, const HostStep* failed) {
  // What was not listed, or not opened, cannot be gone through; all else must be there.
  const bool may_be_short =
      failed != nullptr && (failed->name.ends_with("open") || failed->name.ends_with("names"));
  auto expected = whole.begin();
  for (const HostStep& step : steps) {
    while (may_be_short && expected != whole.end() && expected->name != step.name) ++expected;
    if (expected == whole.end() || expected->name != step.name) {
      return testing::AssertionFailure() << "an unexpected step " << step.name;
    }
    const bool is_failed = failed != nullptr && failed->name == step.name;
    if (!is_failed && step.outcome != expected->outcome) {
      return testing::AssertionFailure()
             << step.name << ": " << step.outcome << ", not " << expected->outcome;
    }
    ++expected;
  }
  if (!may_be_short && expected != whole.end()) {
    return testing::AssertionFailure() << "no step " << expected->name;
  }
  return testing::AssertionSuccess();
}

std::string small_product(const std::string& variant, const std::string& folder,
                          simulate::Profile profile, const std::string& version) {
  simulate::Options options;
  options.variant = variant == "SSC"   ? simulate::Variant::ssc
                    : variant == "MGD" ? simulate::Variant::mgd
                    : variant == "GEC" ? simulate::Variant::gec
                                       : simulate::Variant::eec;
  options.profile = profile;
  options.version_text = version;
  options.polarisations = {"HH", "VV"};
  options.lines = options.samples = size;
  options.targets = 1;
  const std::string path = simulate::write_product_folder(options, folder);
  if (variant == "SSC") {
    const auto images = std::filesystem::path(path).parent_path() / "IMAGEDATA";
    std::set<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::directory_iterator(images)) files.insert(entry);
    const auto& second = *files.rbegin();
    constexpr std::uintmax_t line_bytes = 4 * (size + 2);
    std::filesystem::resize_file(second, std::filesystem::file_size(second) - 9 * line_bytes);
  }
  return path;
}
