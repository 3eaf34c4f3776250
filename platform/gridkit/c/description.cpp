// What a product is, as JSON, and the map that it lies on.

#include <optional>
#include <string>

#include "gridkit/c/open_product.h"
#include "gridkit/info_json.h"
#include "gridkit/map_wkt.h"

namespace {

using gridkit::c::Fault;
using gridkit::c::OpenProduct;
using gridkit::c::require;

// The first layer that lies on a map.
std::optional<gridkit::Layer> layer_on_map(const gridkit::Product& product) {
  for (const std::string& name : product.layer_names()) {
    gridkit::Layer layer = product.open_layer(name);
    if (layer.map_info()) return layer;
  }
  return std::nullopt;
}

}  // namespace

int32_t gridkit_describe(const gridkit_product* product, char** json, gridkit_error** error) {
  if (json != nullptr) *json = nullptr;
  return gridkit::c::contain(product, error, gridkit_CannotRead, [&](OpenProduct& open) {
    require(json, "json");
    *json = gridkit::c::copied_text(
        gridkit::info_as_json(open.product(), gridkit::warnings_of(open.product())));
  });
}

int32_t gridkit_get_map(const gridkit_product* product, gridkit_map* map, char** wkt,
                        gridkit_error** error) {
  if (wkt != nullptr) *wkt = nullptr;
  return gridkit::c::contain(product, error, gridkit_NotThere, [&](OpenProduct& open) {
    gridkit::c::check_filled(map, "map");
    require(wkt, "wkt");
    const auto layer = layer_on_map(open.product());
    if (!layer) throw Fault(gridkit_NotThere, open.path() + ": lies on no map", open.path());
    const gridkit::MapInfo info = *layer->map_info();
    const auto projection = layer->map_projection();
    if (!projection) throw Fault(gridkit_NotThere, open.path() + ": tells no map projection");
    gridkit_map filled{};
    filled.upper_left_x = info.upper_left[0];
    filled.upper_left_y = info.upper_left[1];
    filled.pixel_width = info.pixel_size[0];
    filled.pixel_height = info.pixel_size[1];
    *wkt = gridkit::c::copied_text(gridkit::map_wkt(*projection));
    gridkit::c::fill(map, filled);
  });
}
