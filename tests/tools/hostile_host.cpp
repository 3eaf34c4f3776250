// A host that lives through products as a user would: opens, lists, reads blocks, layers and data,
// places a pixel. One line each on standard output: "good", or "refused: " and why.
//
//     hostile_host PLUGIN ANNOTATION...

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <limits>
#include <span>
#include <string>
#include <vector>

#include "gridkit/image_reader.h"
#include "gridkit/plugin.h"
#include "gridkit/product.h"
#include "gridkit/record_decoder.h"
#include "rmdllib/radar_geometry.h"

namespace {

using gridkit::Layer;
using gridkit::Product;

void read_layer(const Product& product, const std::string& name) {
  const Layer layer = product.open_layer(name);
  layer.map_info();
  layer.map_projection();
  constexpr std::int32_t last = std::numeric_limits<std::int32_t>::max();
  constexpr std::int32_t first = std::numeric_limits<std::int32_t>::min();
  std::vector<std::uint16_t> block;
  for (const std::int32_t place : {0, 1, -1, 1 << 16, 1 << 26, last, first}) {
    layer.read_block(place, 0, block);
    layer.read_block(0, place, block);
    layer.read_block(place, place, block);
  }
  const auto ignore = [](std::span<const std::uint16_t>, std::int32_t) {};
  const std::int32_t width = std::min(layer.width(), 100);
  const std::int32_t height = std::min(layer.height(), 100);
  gridkit::read_window(product, name, {0, 0, width, height}, ignore);
  gridkit::read_window(product, name,
                       {layer.width() - width, layer.height() - height, width, height}, ignore);
  gridkit::read_window(product, name, {0, 0, layer.width(), layer.height()}, ignore);
}

void place_pixels(const Product& product) {
  const auto names = product.data_names();
  for (const std::string& name : names) {
    const auto data = product.read_data(name);
    if (!data) continue;
    const auto fields = gridkit::decode_record(data->dictionary, data->type, data->bytes);
    if (name != ":RADAR_Generic_v2.2") continue;
    const rmdllib::RadarGeometry geometry(fields);
    geometry.ground_of({0, 0}, 0);
    for (const double far : {-1e9, 1e9}) {
      try {
        geometry.ground_of({far, far}, 0);
      } catch (const gridkit::Error&) {
        continue;  // nothing is seen there
      }
    }
  }
}

// Goes on behind a refusal, so that one fault hides no other; gives the first.
template <class Step>
void attempt(std::string& refusal, Step step) {
  try {
    step();
  } catch (const std::exception& error) {
    if (refusal.empty()) refusal = error.what();
  }
}

std::string live(gridkit::Plugin& plugin, const std::string& path) {
  std::string refusal;
  attempt(refusal, [&] {
    if (!plugin.identify(path)) throw gridkit::Error("not of the format");
    const Product product = plugin.open(path);
    for (const std::string& name : product.layer_names()) {
      attempt(refusal, [&] { read_layer(product, name); });
    }
    attempt(refusal, [&] { place_pixels(product); });
  });
  std::replace(refusal.begin(), refusal.end(), '\n', ' ');
  return refusal;
}

}  // namespace

int main(int argc, char** argv) {
  const auto plugin = gridkit::Plugin::load(argv[1]);
  for (const char* path : std::span(argv, static_cast<std::size_t>(argc)).subspan(2)) {
    const std::string refusal = live(*plugin, path);
    std::printf("%s%s\n", refusal.empty() ? "good" : "refused: ", refusal.c_str());
  }
  return 0;
}
