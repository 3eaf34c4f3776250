#include "tools/gridkit/place/scene_points.h"

#include <cstddef>
#include <utility>

#include "tools/annotation/annotation_file.h"

namespace {

constexpr double speed_of_light = 299792458;  // m/s, by definition of the metre

double second_of_day(const lmx::c_datetime& time) {
  return (time.hour * 60 + time.minute) * 60 + static_cast<double>(time.seconds);
}

template <class Coordinates>
ScenePoint point(std::string name, const Coordinates& place) {
  ScenePoint result{std::move(name),
                    place.get_lat(),
                    place.get_lon(),
                    second_of_day(place.get_azimuthTimeUTC()),
                    place.get_rangeTime() / 2 * speed_of_light,
                    std::nullopt};
  // Rows and columns count from 1.
  if (place.isset_refRow() && place.isset_refColumn()) {
    result.pixel = {place.get_refRow() - 1.0, place.get_refColumn() - 1.0};
  }
  return result;
}

}  // namespace

std::vector<ScenePoint> read_scene_points(const std::string& path, const std::string& schema) {
  return with_root(schema, [&](auto& root) {
    bind_leniently(root, path);
    const auto& scene = root.get_level1Product().get_productInfo().get_sceneInfo();
    std::vector<ScenePoint> points = {point("centre", scene.get_sceneCenterCoord())};
    for (std::size_t i = 0; i < scene.size_sceneCornerCoord(); ++i) {
      points.push_back(point("corner " + std::to_string(i + 1), scene.get_sceneCornerCoord(i)));
    }
    return points;
  });
}
