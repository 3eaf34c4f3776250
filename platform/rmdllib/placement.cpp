#include "rmdllib/placement.h"

#include <algorithm>
#include <string>

#include "gridkit/error.h"
#include "gridkit/record_decoder.h"

namespace rmdllib {

namespace {

RadarGeometry geometry_of(const gridkit::NonStandardData& model) {
  return RadarGeometry(gridkit::decode_record(model.dictionary, model.type, model.bytes));
}

}  // namespace

SignalCorrections corrections_of(const gridkit::GeolocationGrid& grid) {
  return {grid.range_delay(), grid.azimuth_shift()};
}

Placement::Place Placement::place_of(const gridkit::Product& product) {
  const std::string model = std::string(":") + RadarGeometry::design;
  const auto names = product.data_names();
  if (std::find(names.begin(), names.end(), model) != names.end()) {
    if (const auto data = product.read_data(model)) return geometry_of(*data);
  }
  const auto layers = product.layer_names();
  if (!layers.empty()) {
    const gridkit::Layer layer = product.open_layer(layers.front());
    const auto info = layer.map_info();
    const auto projection = layer.map_projection();
    if (info && projection) {
      return Map{gridkit::MapTransform(*info, *projection), static_cast<double>(layer.height()),
                 static_cast<double>(layer.width())};
    }
  }
  throw gridkit::Error("it publishes neither a sensor model nor map data");
}

Placement::Placement(const gridkit::Product& product) try : place_(place_of(product)) {
} catch (const gridkit::Error& error) {
  throw gridkit::Error(product.path() + ": its pixels cannot be placed: " +
                           gridkit::reason_of(error, product.path()),
                       {}, error.calls());
}

Placement::Placement(const gridkit::NonStandardData& model) : place_(geometry_of(model)) {}

void Placement::apply(const SignalCorrections& corrections) {
  if (const auto* geometry = radar()) place_ = geometry->with(corrections);
}

double Placement::lines() const {
  return radar() != nullptr ? radar()->lines() : std::get<Map>(place_).lines;
}

double Placement::samples() const {
  return radar() != nullptr ? radar()->samples() : std::get<Map>(place_).samples;
}

bool Placement::contains(Pixel pixel) const {
  constexpr double half = 0.5;  // pixel
  return pixel.line >= -half && pixel.line <= lines() - half && pixel.sample >= -half &&
         pixel.sample <= samples() - half;
}

Geodetic Placement::ground_of(Pixel pixel, double height) const {
  if (const auto* geometry = radar()) return geometry->ground_of(pixel, height);
  const auto& map = std::get<Map>(place_).transform;
  const gridkit::GeographicPoint point = map.to_ground({pixel.sample, pixel.line});
  return {point.latitude_degrees, point.longitude_degrees, height};
}

Pixel Placement::pixel_of(const Geodetic& place) const {
  if (const auto* geometry = radar()) return geometry->pixel_of(place);
  const auto& map = std::get<Map>(place_).transform;
  const gridkit::ImagePoint point = map.to_image({place.latitude_degrees, place.longitude_degrees});
  return {point.line, point.sample};
}

}  // namespace rmdllib
