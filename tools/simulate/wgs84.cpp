#include "tools/simulate/wgs84.h"

namespace simulate {

using namespace wgs84;

Vector3 to_earth_fixed(const Geodetic& place) {
  const double s = std::sin(place.latitude_radians);
  const double c = std::cos(place.latitude_radians);
  const double normal = semimajor / std::sqrt(1 - eccentricity2 * s * s);
  const double across = (normal + place.height) * c;
  return {across * std::cos(place.longitude_radians), across * std::sin(place.longitude_radians),
          (normal * (1 - eccentricity2) + place.height) * s};
}

Geodetic to_geodetic(Vector3 position) {
  const double across = std::hypot(position.x, position.y);
  const double second2 = eccentricity2 / (1 - eccentricity2);
  double reduced = std::atan2(position.z, across * (1 - flattening));
  double latitude = 0;
  for (int i = 0; i < 6; ++i) {
    const double s = std::sin(reduced);
    const double c = std::cos(reduced);
    latitude = std::atan2(position.z + second2 * semiminor * s * s * s,
                          across - eccentricity2 * semimajor * c * c * c);
    reduced = std::atan2((1 - flattening) * std::sin(latitude), std::cos(latitude));
  }
  const double s = std::sin(latitude);
  const double c = std::cos(latitude);
  const double height =
      across * c + position.z * s - semimajor * std::sqrt(1 - eccentricity2 * s * s);
  return {latitude, std::atan2(position.y, position.x), height};
}

Vector3 up_at(const Geodetic& place) {
  const double c = std::cos(place.latitude_radians);
  return {c * std::cos(place.longitude_radians), c * std::sin(place.longitude_radians),
          std::sin(place.latitude_radians)};
}

}  // namespace simulate
