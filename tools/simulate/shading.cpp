#include "tools/simulate/shading.h"

#include <algorithm>
#include <cmath>

#include "tools/simulate/scene.h"

namespace simulate {

namespace {

constexpr int most_steps = 128;  // along each axis
constexpr double finest_step = 4;

std::size_t nodes_of(std::int32_t pixels) {
  return static_cast<std::size_t>(std::min<double>(most_steps, std::ceil(pixels / finest_step))) +
         1;
}

double factor_at(const Scene& scene, const Geodetic& place) {
  constexpr double arm = 20;  // m, to either side
  constexpr double darkest = 0.05;
  constexpr double brightest = 12;
  const double north_arm = arm / wgs84::semiminor;
  const double east_arm = arm / (wgs84::semimajor * std::cos(place.latitude_radians));
  const auto point = [&](double north, double east) {
    Geodetic near{place.latitude_radians + north * north_arm,
                  place.longitude_radians + east * east_arm, 0};
    near.height = scene.terrain_height(near.latitude_radians, near.longitude_radians);
    return to_earth_fixed(near);
  };
  const Vector3 normal = unit(cross(point(0, 1) - point(0, -1), point(1, 0) - point(-1, 0)));
  const Vector3 satellite = scene.orbit.at(to_radar(scene.orbit, place).time).position;
  const Vector3 sight = unit(satellite - to_earth_fixed(place));
  const Vector3 up = up_at(place);
  // Along the direction of range on the ground, towards the satellite.
  const Vector3 towards = unit(sight - dot(sight, up) * up);
  const double slope = std::atan2(dot(normal, towards), dot(normal, up));
  const double incidence = std::acos(dot(sight, up));
  const double local = incidence - slope;
  if (local >= std::numbers::pi / 2) return darkest;
  if (local <= 0) return brightest;
  return std::clamp(std::sin(incidence) / std::sin(local), darkest, brightest);
}

}  // namespace

Shading::Shading(const Scene& scene)
    : rows_(nodes_of(scene.options.lines)),
      columns_(nodes_of(scene.options.samples)),
      step_{(scene.options.lines - 1) / static_cast<double>(rows_ - 1),
            (scene.options.samples - 1) / static_cast<double>(columns_ - 1)},
      factors_(rows_ * columns_) {
  for (std::size_t row = 0; row < rows_; ++row) {
    for (std::size_t column = 0; column < columns_; ++column) {
      node(row, column) =
          factor_at(scene, scene.to_ground({static_cast<double>(row) * step_.line,
                                            static_cast<double>(column) * step_.sample}));
    }
  }
}

double Shading::at(Pixel pixel) const {
  const double down = pixel.line / step_.line;
  const double across = pixel.sample / step_.sample;
  const auto row = std::min(static_cast<std::size_t>(down), rows_ - 2);
  const auto column = std::min(static_cast<std::size_t>(across), columns_ - 2);
  const double v = down - static_cast<double>(row);
  const double u = across - static_cast<double>(column);
  return (node(row, column) * (1 - u) + node(row, column + 1) * u) * (1 - v) +
         (node(row + 1, column) * (1 - u) + node(row + 1, column + 1) * u) * v;
}

}  // namespace simulate
