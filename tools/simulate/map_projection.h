#pragma once

#include <string>

#include "tools/simulate/wgs84.h"

namespace simulate {

struct MapPoint {
  double easting = 0;   // m
  double northing = 0;  // m
};

// Universal Transverse Mercator and Universal Polar Stereographic on WGS 84. Transverse Mercator by
// Krüger's series in the third flattening to the fourth order (better than a millimetre within a
// zone); the polar stereographic in closed form with Snyder's formulas. False origins and scale
// factors as defined for UTM (500 km, 0 or 10,000 km, 0.9996) and UPS (2,000 km twice, 0.994).
class MapProjection {
 public:
  // UTM in the zone of the place, or UPS of its hemisphere.
  static MapProjection utm_at(const Geodetic& place);
  static MapProjection ups_at(const Geodetic& place);

  MapPoint to_map(const Geodetic& place) const;
  Geodetic to_ground(MapPoint point, double height) const;

  bool is_ups() const { return zone_ == 0; }
  int zone() const { return zone_; }  // 1 to 60, 0 for UPS
  bool is_north() const { return north_; }
  int epsg() const;
  Geodetic centre() const;      // of the projection
  MapPoint origin() const;      // false easting and northing
  double scale_factor() const;  // at the centre

 private:
  MapProjection(int zone, bool north) : zone_(zone), north_(north) {}
  int zone_;
  bool north_;
};

}  // namespace simulate
