#include "rmdllib/incidence.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <utility>

namespace rmdllib {

double incidence_angle(const RadarGeometry& geometry, Pixel pixel, double height) {
  const RadarPoint seen = geometry.radar_of(pixel);
  const Geodetic place = geometry.ground_of(pixel, height);
  const Vector3 to_satellite =
      geometry.orbit().at(seen.time).position - geometry.earth().to_earth_fixed(place);
  const Vector3 up = Ellipsoid::up(place);
  return std::atan2(length(cross(up, to_satellite)), dot(up, to_satellite));
}

EllipsoidIncidence::EllipsoidIncidence(std::shared_ptr<const RadarGeometry> geometry)
    : geometry_(std::move(geometry)) {}

EllipsoidIncidence::~EllipsoidIncidence() = default;

double EllipsoidIncidence::at(double line, double sample) const {
  return incidence_angle(*geometry_, {line, sample}, geometry_->average_height());
}

std::string EllipsoidIncidence::source() const {
  char height[32];
  std::snprintf(height, sizeof height, "%.9g", geometry_->average_height());
  return std::string("sensor model, on the ellipsoid at ") + height + " m";
}

}  // namespace rmdllib
