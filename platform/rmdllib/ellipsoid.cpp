#include "rmdllib/ellipsoid.h"

#include <cmath>
#include <numbers>

#include "gridkit/error.h"

namespace rmdllib {

namespace {

constexpr double degree = std::numbers::pi / 180;

}  // namespace

Ellipsoid::Ellipsoid(double semimajor, double semiminor)
    : semimajor_(semimajor),
      semiminor_(semiminor),
      eccentricity2_(1 - semiminor * semiminor / (semimajor * semimajor)) {
  if (std::isfinite(semimajor) && semimajor >= semiminor && semiminor > 0) return;
  throw gridkit::Error("the ellipsoid's semi-axes are not those of an Earth");
}

Ellipsoid Ellipsoid::wgs84() {
  return {6378137.0, 6356752.314245};
}

Vector3 Ellipsoid::to_earth_fixed(const Geodetic& place) const {
  const double sine = std::sin(place.latitude_degrees * degree);
  const double cosine = std::cos(place.latitude_degrees * degree);
  const double prime_vertical = semimajor_ / std::sqrt(1 - eccentricity2_ * sine * sine);
  const double from_axis = (prime_vertical + place.height) * cosine;
  return {from_axis * std::cos(place.longitude_degrees * degree),
          from_axis * std::sin(place.longitude_degrees * degree),
          (prime_vertical * (1 - eccentricity2_) + place.height) * sine};
}

// Bowring, B. R.: Transformation from spatial to geographical coordinates, Survey Review 23, 1976.
Geodetic Ellipsoid::to_geodetic(Vector3 position) const {
  const double from_axis = std::hypot(position.x, position.y);
  const double second_eccentricity2 = eccentricity2_ / (1 - eccentricity2_);
  double reduced = std::atan2(position.z * semimajor_, from_axis * semiminor_);
  double latitude = 0;
  for (int i = 0; i < 4; ++i) {
    const double sine = std::sin(reduced);
    const double cosine = std::cos(reduced);
    latitude = std::atan2(position.z + second_eccentricity2 * semiminor_ * sine * sine * sine,
                          from_axis - eccentricity2_ * semimajor_ * cosine * cosine * cosine);
    reduced = std::atan2(semiminor_ * std::sin(latitude), semimajor_ * std::cos(latitude));
  }
  const double sine = std::sin(latitude);
  const double height = from_axis * std::cos(latitude) + position.z * sine -
                        semimajor_ * std::sqrt(1 - eccentricity2_ * sine * sine);
  return {latitude / degree, std::atan2(position.y, position.x) / degree, height};
}

Vector3 Ellipsoid::up(const Geodetic& place) {
  const double cosine = std::cos(place.latitude_degrees * degree);
  return {cosine * std::cos(place.longitude_degrees * degree),
          cosine * std::sin(place.longitude_degrees * degree),
          std::sin(place.latitude_degrees * degree)};
}

Vector3 Ellipsoid::east(const Geodetic& place) {
  return {-std::sin(place.longitude_degrees * degree), std::cos(place.longitude_degrees * degree),
          0};
}

Vector3 Ellipsoid::north(const Geodetic& place) {
  return cross(up(place), east(place));
}

double Ellipsoid::radius_below(Vector3 position) const {
  const Vector3 along = unit(position);
  const double across2 = (along.x * along.x + along.y * along.y) / (semimajor_ * semimajor_);
  return 1 / std::sqrt(across2 + along.z * along.z / (semiminor_ * semiminor_));
}

}  // namespace rmdllib
