#include "tools/gridkit/place/placement.h"

#include <algorithm>
#include <string>

#include "gridkit/error.h"
#include "gridkit/record_decoder.h"

namespace {

using Place = std::variant<rmdllib::RadarGeometry, gridkit::MapTransform>;

Place placed(const gridkit::Product& product) {
  const std::string model = std::string(":") + rmdllib::RadarGeometry::design;
  const auto names = product.data_names();
  if (std::find(names.begin(), names.end(), model) != names.end()) {
    if (const auto data = product.read_data(model)) {
      return rmdllib::RadarGeometry(
          gridkit::decode_record(data->dictionary, data->type, data->bytes));
    }
  }
  const auto layers = product.layer_names();
  if (!layers.empty()) {
    const gridkit::Layer layer = product.open_layer(layers.front());
    const auto info = layer.map_info();
    const auto projection = layer.map_projection();
    if (info && projection) return gridkit::MapTransform(*info, *projection);
  }
  throw gridkit::Error("it publishes neither a sensor model nor map data");
}

}  // namespace

Placement::Placement(const gridkit::Product& product) try : place_(placed(product)) {
} catch (const gridkit::Error& error) {
  throw gridkit::Error(product.path() + ": its pixels cannot be placed: " + error.what());
}

rmdllib::Geodetic Placement::ground_of(rmdllib::Pixel pixel, double height) const {
  if (const auto* geometry = radar()) return geometry->ground_of(pixel, height);
  const auto& map = std::get<gridkit::MapTransform>(place_);
  const gridkit::GeographicPoint point = map.to_ground({pixel.sample, pixel.line});
  return {point.latitude_degrees, point.longitude_degrees, height};
}

rmdllib::Pixel Placement::pixel_of(const rmdllib::Geodetic& place) const {
  if (const auto* geometry = radar()) return geometry->pixel_of(place);
  const auto& map = std::get<gridkit::MapTransform>(place_);
  const gridkit::ImagePoint point = map.to_image({place.latitude, place.longitude});
  return {point.line, point.sample};
}
