#include "tools/gridkit/read/image_place.h"

#include <array>
#include <charconv>
#include <functional>

#include "gridkit/geolocation_grid.h"
#include "rmdllib/placement.h"
#include "rmdllib/rational_model.h"
#include "tools/gridkit/place/rational_text.h"
#include "tools/gridkit/terminal/terminal.h"

namespace {

using rmdllib::Pixel;

// The shortest text that reads back to the bit.
std::string number(double value) {
  std::array<char, 32> text{};
  const auto end = std::to_chars(text.data(), text.data() + text.size(), value).ptr;
  return {text.data(), end};
}

gridkit::Georeference georeference_of(const gridkit::MapInfo& map,
                                      const gridkit::MapProjection& projection,
                                      const gridkit::Window& window) {
  gridkit::Georeference georeference;
  georeference.transform = {map.upper_left[0] + window.column * map.pixel_size[0],
                            map.pixel_size[0],
                            0,
                            map.upper_left[1] + window.line * map.pixel_size[1],
                            0,
                            map.pixel_size[1]};
  georeference.projection = projection;
  return georeference;
}

// Places count pixels by their centres, control points by their corners: half a pixel between.
std::vector<gridkit::ControlPoint> points_of(const rmdllib::Placement& placement,
                                             const std::function<double(Pixel)>& height_at,
                                             const gridkit::Window& window) {
  std::vector<gridkit::ControlPoint> points;
  constexpr int steps = control_points_a_side - 1;
  for (int row = 0; row <= steps; ++row) {
    for (int column = 0; column <= steps; ++column) {
      const double x = static_cast<double>(window.width) * column / steps;
      const double y = static_cast<double>(window.height) * row / steps;
      const Pixel pixel = {window.line + y - 0.5, window.column + x - 0.5};
      const rmdllib::Geodetic place = placement.ground_of(pixel, height_at(pixel));
      points.push_back({x, y, place.longitude_degrees, place.latitude_degrees, place.height});
    }
  }
  return points;
}

// A scene over the date line keeps its longitudes together, beyond 180 degrees if need be.
void join_longitudes(std::vector<gridkit::ControlPoint>& points) {
  for (gridkit::ControlPoint& point : points) {
    const double way = point.longitude - points.front().longitude;
    if (way > 180) point.longitude -= 360;
    if (way < -180) point.longitude += 360;
  }
}

// Control points and what is told of them.
void add_points(const rmdllib::Placement& placement, const gridkit::GeolocationGrid* grid,
                const gridkit::Window& window, ImagePlace& place) {
  const double average = placement.radar()->average_height();
  const bool knows_terrain = grid != nullptr && grid->has_image_axes();
  place.control_points = points_of(
      placement,
      [&](Pixel pixel) {
        return knows_terrain ? grid->height_at(pixel.line, pixel.sample) : average;
      },
      window);
  join_longitudes(place.control_points);
  const std::string heights = knows_terrain
                                  ? "the terrain's heights, as the geolocation grid has them,"
                                  : number(average) + " m";
  place.metadata.emplace_back("CONTROL_POINTS",
                              "sensor model at " + heights +
                                  " above WGS 84; whole numbers are corners of pixels, 0.5 0.5 the "
                                  "centre of the first");
}

// Rational polynomials and what is told of them. An image that none fit keeps its control points.
void add_rational_model(const rmdllib::RadarGeometry& geometry, const gridkit::Window& window,
                        ImagePlace& place) {
  try {
    const rmdllib::FittedRationalModel fitted = rmdllib::fit_rational_model(geometry);
    place.rational_model = rational_model_as_metadata(fitted, window.line, window.column);
    place.metadata.emplace_back("RPC_ERR_LINE", number(fitted.largest_line_error));
    place.metadata.emplace_back("RPC_ERR_SAMP", number(fitted.largest_sample_error));
    place.metadata.emplace_back("RPC_MIN_HEIGHT", number(fitted.heights.lowest));
    place.metadata.emplace_back("RPC_MAX_HEIGHT", number(fitted.heights.highest));
    place.rational_warning = remark_on(fitted);
  } catch (const gridkit::Error& error) {
    place.rational_warning = "has no rational model: " + error.sentence();
  }
}

}  // namespace

ImagePlace place_of(const gridkit::Product& product, const gridkit::Layer& layer,
                    const gridkit::Window& window, bool delays) {
  ImagePlace result;
  try {
    if (const auto map = layer.map_info()) {
      const auto projection = layer.map_projection();
      if (!projection) throw gridkit::Error("its map projection is not told");
      result.georeference = georeference_of(*map, *projection, window);
      return result;
    }
    rmdllib::Placement placement(product);
    if (placement.radar() == nullptr) throw gridkit::Error("its place is not told");
    const gridkit::FoundGrid found =
        gridkit::find_geolocation_grid(product.plugin(), product.path());
    result.grid_warning = found.warning;
    const bool has_delays = delays && found.grid != nullptr;
    if (has_delays) placement.apply(rmdllib::corrections_of(*found.grid));
    add_points(placement, found.grid.get(), window, result);
    result.metadata.emplace_back("SIGNAL_DELAYS", has_delays ? "applied" : "left out");
    add_rational_model(*placement.radar(), window, result);
  } catch (const gridkit::Error& error) {
    result.control_points.clear();
    result.metadata.clear();
    result.not_known = error.sentence();
  }
  return result;
}

void warn_about_place(const ImagePlace& place, const std::string& output) {
  if (!place.not_known.empty()) warn(output + ": is not placed on Earth: " + place.not_known);
  if (!place.grid_warning.empty()) {
    warn(place.grid_warning + "; the geolocation grid is not used");
  }
  if (!place.rational_warning.empty()) warn(output + ": " + place.rational_warning);
}
