// Opens a product with the host's library: prints its layers, and the mean of one.
//
//   embed FILE          the layers
//   embed FILE LAYER    the mean of a layer's pixels as well

#include <cstdint>
#include <cstdio>
#include <exception>
#include <span>
#include <string>

#include <gridkit/image_reader.h>
#include <gridkit/plugin.h>
#include <gridkit/product.h>

namespace {

// The file, opened by the first plug-in that takes it for one of its format.
gridkit::Product open(const std::string& path) {
  const gridkit::PluginFolder folder = gridkit::load_plugins(gridkit::default_plugin_folder());
  for (const std::string& refused : folder.refused) std::fprintf(stderr, "%s\n", refused.c_str());
  for (const auto& plugin : folder.plugins) {
    if (plugin->identify(path)) return plugin->open(path);
  }
  throw gridkit::Error(path + ": of none of the known formats");
}

void print_layers(const gridkit::Product& product) {
  std::printf("%s\n", product.title().c_str());
  for (const std::string& name : product.layer_names()) {
    const gridkit::Layer layer = product.open_layer(name);
    std::printf("%s: %d x %d, %s\n", name.c_str(), layer.width(), layer.height(),
                layer.pixel_type().c_str());
  }
}

// Pixels come as 16 bits without a sign; those of the type "s16" have one.
double mean(const gridkit::Product& product, const std::string& name) {
  const gridkit::Layer layer = product.open_layer(name);
  const bool is_signed = layer.pixel_type() == "s16";
  const gridkit::Window whole{0, 0, layer.width(), layer.height()};
  double sum = 0;
  const auto add = [&](std::span<const std::uint16_t> pixels, std::int32_t) {
    for (const std::uint16_t pixel : pixels) {
      sum += is_signed ? static_cast<std::int16_t>(pixel) : pixel;
    }
  };
  const auto missing = gridkit::read_window(product, name, whole, add);
  if (!missing.empty()) std::fprintf(stderr, "lines that did not come count as zeros\n");
  return sum / layer.width() / layer.height();
}

}  // namespace

int main(int argc, char** argv) try {
  if (argc < 2 || argc > 3) {
    std::fprintf(stderr, "usage: embed FILE [LAYER]\n");
    return 2;
  }
  const gridkit::Product product = open(argv[1]);
  print_layers(product);
  if (argc == 3) std::printf("mean of %s: %.3f\n", argv[2], mean(product, argv[2]));
  return 0;
} catch (const std::exception& error) {
  std::fprintf(stderr, "embed: %s\n", error.what());
  return 1;
}
