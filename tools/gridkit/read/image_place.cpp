#include "tools/gridkit/read/image_place.h"

#include "rmdllib/placement.h"

namespace {

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
std::vector<gridkit::ControlPoint> grid_of(const rmdllib::Placement& placement, double height,
                                           const gridkit::Window& window) {
  std::vector<gridkit::ControlPoint> points;
  constexpr int steps = control_points_a_side - 1;
  for (int row = 0; row <= steps; ++row) {
    for (int column = 0; column <= steps; ++column) {
      const double x = static_cast<double>(window.width) * column / steps;
      const double y = static_cast<double>(window.height) * row / steps;
      const rmdllib::Geodetic place =
          placement.ground_of({window.line + y - 0.5, window.column + x - 0.5}, height);
      points.push_back({x, y, place.longitude_degrees, place.latitude_degrees, height});
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

}  // namespace

ImagePlace place_of(const gridkit::Product& product, const gridkit::Layer& layer,
                    const gridkit::Window& window) {
  ImagePlace result;
  try {
    if (const auto map = layer.map_info()) {
      const auto projection = layer.map_projection();
      if (!projection) throw gridkit::Error("its map projection is not told");
      result.georeference = georeference_of(*map, *projection, window);
      return result;
    }
    const rmdllib::Placement placement(product);
    if (placement.radar() == nullptr) throw gridkit::Error("its place is not told");
    result.height = placement.radar()->average_height();
    result.control_points = grid_of(placement, result.height, window);
    join_longitudes(result.control_points);
  } catch (const gridkit::Error& error) {
    result.control_points.clear();
    result.not_known = error.sentence();
  }
  return result;
}
