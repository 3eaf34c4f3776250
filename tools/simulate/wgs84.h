#pragma once

#include <numbers>

#include "rmdllib/vector3.h"

namespace simulate {

using rmdllib::Vector3;

inline constexpr double degree = std::numbers::pi / 180;
inline constexpr double speed_of_light = 299792458.0;  // m/s

// World Geodetic System 1984.
namespace wgs84 {
inline constexpr double semimajor = 6378137.0;  // m
inline constexpr double flattening = 1 / 298.257223563;
inline constexpr double semiminor = semimajor * (1 - flattening);
inline constexpr double eccentricity2 = flattening * (2 - flattening);
inline constexpr double gravity = 3.986004418e14;  // m3/s2
inline constexpr double rotation = 7.292115e-5;    // rad/s
inline constexpr double j2 = 1.08262982e-3;        // second zonal harmonic
}  // namespace wgs84

// Geodetic coordinates, height above the ellipsoid in metres.
struct Geodetic {
  double latitude_radians = 0;
  double longitude_radians = 0;
  double height = 0;
};

// Earth-fixed Cartesian coordinates in metres.
Vector3 to_earth_fixed(const Geodetic& place);

// The inverse, by Bowring's iteration, to far below a millimetre for any place on Earth or in a low
// orbit. Longitudes come in (-pi, pi].
Geodetic to_geodetic(Vector3 position);

// Outward normal of the ellipsoid at a place.
Vector3 up_at(const Geodetic& place);

}  // namespace simulate
