#pragma once

#include "gridkit/export.h"
#include "rmdllib/vector3.h"

namespace rmdllib {

// A place on Earth, by its geodetic latitude and longitude.
struct Geodetic {
  double latitude_degrees = 0;
  double longitude_degrees = 0;
  double height = 0;  // metres above the ellipsoid
};

// An ellipsoid of revolution about the Earth-fixed z axis, by its semi-axes in metres.
class GRIDKIT_API Ellipsoid {
 public:
  // Throws gridkit::Error unless semimajor >= semiminor > 0.
  Ellipsoid(double semimajor, double semiminor);

  // That of the World Geodetic System 1984, on which the places of products are stated.
  static Ellipsoid wgs84();

  // Earth-fixed Cartesian coordinates in metres.
  Vector3 to_earth_fixed(const Geodetic& place) const;

  // The inverse by Bowring's iteration, to far below a millimetre from the surface to a low orbit.
  // Longitudes come in (-180, 180].
  Geodetic to_geodetic(Vector3 position) const;

  // Outward normal of the ellipsoid through a place.
  static Vector3 up(const Geodetic& place);
  // Horizontal directions at a place.
  static Vector3 east(const Geodetic& place);
  static Vector3 north(const Geodetic& place);

  // Distance of the surface from the centre in the direction of a position.
  double radius_below(Vector3 position) const;

 private:
  double semimajor_;
  double semiminor_;
  double eccentricity2_;
};

}  // namespace rmdllib
