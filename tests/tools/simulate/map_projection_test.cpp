#include "tools/simulate/map_projection.h"

#include <gtest/gtest.h>

namespace {

using namespace simulate;

Geodetic place(double latitude, double longitude) {
  return {latitude * degree, longitude * degree, 0};
}

TEST(Utm, PutsTheCentralMeridianAtItsOrigin) {
  const MapProjection projection = MapProjection::utm_at(place(48, 9.5));
  EXPECT_EQ(projection.zone(), 32);
  EXPECT_EQ(projection.epsg(), 32632);
  const MapPoint point = projection.to_map(place(0, 9));
  EXPECT_NEAR(point.easting, 500000, 1e-6);
  EXPECT_NEAR(point.northing, 0, 1e-6);
}

// Meridian quadrant of WGS 84: 10,001,965.729 m, times 0.9996.
TEST(Utm, MeasuresTheMeridianQuadrant) {
  const MapProjection projection = MapProjection::utm_at(place(48, 9));
  EXPECT_NEAR(projection.to_map(place(89.9999999, 9)).northing, 10001965.729 * 0.9996, 0.02);
}

TEST(Utm, SouthOfTheEquatorCountsFromTenThousandKilometres) {
  const MapProjection projection = MapProjection::utm_at(place(-1, 9));
  EXPECT_EQ(projection.epsg(), 32732);
  const MapProjection north = MapProjection::utm_at(place(1, 9));
  EXPECT_NEAR(projection.to_map(place(-1, 10)).northing + north.to_map(place(1, 10)).northing,
              10000000, 1e-6);
}

TEST(Utm, ZonesMeetTheDateLine) {
  EXPECT_EQ(MapProjection::utm_at(place(0, 179.9)).zone(), 60);
  EXPECT_EQ(MapProjection::utm_at(place(0, -179.9)).zone(), 1);
}

TEST(Ups, PutsThePoleAtItsOrigin) {
  const MapProjection north = MapProjection::ups_at(place(85, 20));
  EXPECT_EQ(north.epsg(), 32661);
  EXPECT_NEAR(north.to_map(place(90, 0)).easting, 2000000, 1e-6);
  EXPECT_NEAR(north.to_map(place(90, 0)).northing, 2000000, 1e-6);
  EXPECT_EQ(MapProjection::ups_at(place(-85, 20)).epsg(), 32761);
}

// On a conformal projection a small step north is as long as one east; both equal the scale factor
// times the true length. Checked with finite steps of a hundred metres or so.
TEST(Projections, AreConformal) {
  for (const auto& [lat, lon, ups] : {std::tuple{48.0, 11.0, false},
                                      {-33.0, 18.2, false},
                                      {78.0, 15.0, true},
                                      {-80.0, 100.0, true}}) {
    const MapProjection p =
        ups ? MapProjection::ups_at(place(lat, lon)) : MapProjection::utm_at(place(lat, lon));
    const double step = 1e-5 / degree * degree;
    const Geodetic here = place(lat, lon);
    const Geodetic north{here.latitude_radians + step, here.longitude_radians, 0};
    const Geodetic east{here.latitude_radians, here.longitude_radians + step, 0};
    const auto scale = [&](const Geodetic& there) {
      const MapPoint a = p.to_map(here);
      const MapPoint b = p.to_map(there);
      return std::hypot(b.easting - a.easting, b.northing - a.northing) /
             length(to_earth_fixed(there) - to_earth_fixed(here));
    };
    EXPECT_NEAR(scale(north), scale(east), 2e-6) << lat;
  }
}

TEST(Projections, ComeBackToAMicrometre) {
  for (const auto& [lat, lon, ups] : {std::tuple{48.0, 11.3, false},
                                      {-33.9, 18.4, false},
                                      {0.01, -179.99, false},
                                      {70.0, 179.99, false},
                                      {84.0, -120.0, true},
                                      {-77.0, 166.0, true}}) {
    const MapProjection p =
        ups ? MapProjection::ups_at(place(lat, lon)) : MapProjection::utm_at(place(lat, lon));
    const Geodetic back = p.to_ground(p.to_map(place(lat, lon)), 0);
    EXPECT_LT(length(to_earth_fixed(back) - to_earth_fixed(place(lat, lon))), 1e-6) << lat;
  }
}

}  // namespace
