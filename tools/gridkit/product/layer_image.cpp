#include "tools/gridkit/product/layer_image.h"

#include <algorithm>

std::optional<std::size_t> image_of_layer(const gridkit::Product& product, const std::string& layer,
                                          std::size_t images) {
  const auto layers = product.layer_names();
  const auto found = std::find(layers.begin(), layers.end(), layer);
  if (found == layers.end() || images == 0 || layers.size() % images != 0) return std::nullopt;
  return static_cast<std::size_t>(found - layers.begin()) / (layers.size() / images);
}
