// What a product is, as JSON, and the map that it lies on.

#include <optional>
#include <string>

#include <nlohmann/json.hpp>

#include "gridkit/c/open_product.h"
#include "gridkit/describe/json_text.h"
#include "gridkit/map_wkt.h"
#include "gridkit/plugin.h"

namespace {

using gridkit::c::Fault;
using gridkit::c::OpenProduct;
using gridkit::c::require;
using json = nlohmann::ordered_json;

// A map whose projection is not known counts as none: the pixels are there all the same.
std::optional<gridkit::MapInfo> map_of(const gridkit::Layer& layer) try {
  return layer.map_info();
} catch (const gridkit::Error&) {
  return std::nullopt;
}

json map_as_json(const std::optional<gridkit::MapInfo>& map) {
  if (!map) return nullptr;
  return {{"projection", map->projection},
          {"upperLeft", {map->upper_left[0], map->upper_left[1]}},
          {"pixelSize", {map->pixel_size[0], map->pixel_size[1]}},
          {"units", map->units}};
}

json layer_as_json(const gridkit::Layer& layer) {
  return {{"name", layer.name()},
          {"pixelType", layer.pixel_type()},
          {"layerType", layer.layer_type()},
          {"width", layer.width()},
          {"height", layer.height()},
          {"blockWidth", layer.block_width()},
          {"blockHeight", layer.block_height()},
          {"mapInfo", map_as_json(map_of(layer))}};
}

json description_of(const gridkit::Product& product) {
  json layers = json::array();
  for (const std::string& name : product.layer_names()) {
    layers.push_back(layer_as_json(product.open_layer(name)));
  }
  return {{"format", product.title()},
          {"description", product.plugin().format().description},
          {"file", product.path()},
          {"layers", layers},
          {"data", product.data_names()}};
}

// The first layer that lies on a map.
std::optional<gridkit::Layer> layer_on_map(const gridkit::Product& product) {
  for (const std::string& name : product.layer_names()) {
    gridkit::Layer layer = product.open_layer(name);
    if (layer.map_info()) return layer;
  }
  return std::nullopt;
}

}  // namespace

int32_t gridkit_info(const gridkit_product* product, char** text, gridkit_error** error) {
  if (text != nullptr) *text = nullptr;
  return gridkit::c::contain(product, error, gridkit_CannotRead, [&](OpenProduct& open) {
    require(text, "json");
    *text = gridkit::c::copied_text(gridkit::json_text(description_of(open.product())));
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
