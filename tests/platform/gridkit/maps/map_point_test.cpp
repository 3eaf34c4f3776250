#include "gridkit/map_point.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>
#include <numbers>
#include <string>

#include "gridkit/error.h"

namespace {

using gridkit::GeographicPoint;
using gridkit::ImagePoint;
using gridkit::MapInfo;
using gridkit::MapProjection;
using gridkit::MapTransform;

constexpr double degree = std::numbers::pi / 180;

// --- The projections by their formulas ---

constexpr double a = 6378137;  // WGS 84, metres
constexpr double f = 1 / 298.257223563;
const double e = std::sqrt(f * (2 - f));

struct Metres {
  double x;
  double y;
};

// Transverse Mercator by Krueger's series in the third flattening, to its fourth power: good to
// micrometres in a zone. Central meridian 6 * zone - 183 degrees, scale 0.9996, origin 500 km east.
Metres utm(GeographicPoint p, int zone, bool south) {
  const double n = f / (2 - f);
  const double n2 = n * n;
  const double n3 = n2 * n;
  const double n4 = n3 * n;
  const std::array alpha{n / 2 - 2 * n2 / 3 + 5 * n3 / 16 + 41 * n4 / 180,
                         13 * n2 / 48 - 3 * n3 / 5 + 557 * n4 / 1440,
                         61 * n3 / 240 - 103 * n4 / 140, 49561 * n4 / 161280};
  const double radius = a / (1 + n) * (1 + n2 / 4 + n4 / 64);
  const double s = std::sin(p.latitude_degrees * degree);
  const double lambda = (p.longitude_degrees - (6 * zone - 183)) * degree;
  const double t = std::sinh(std::atanh(s) - e * std::atanh(e * s));
  const double xi = std::atan2(t, std::cos(lambda));
  const double eta = std::atanh(std::sin(lambda) / std::hypot(1, t));
  double x = eta;
  double y = xi;
  for (int j = 1; j <= 4; ++j) {
    const double alpha_j = alpha[static_cast<std::size_t>(j - 1)];
    x += alpha_j * std::cos(2 * j * xi) * std::sinh(2 * j * eta);
    y += alpha_j * std::sin(2 * j * xi) * std::cosh(2 * j * eta);
  }
  return {500000 + 0.9996 * radius * x, (south ? 1e7 : 0) + 0.9996 * radius * y};
}

// The conformal colatitude's half tangent, latitude counted from the equator to the pole in sight.
double half_tangent(double latitude) {
  const double s = e * std::sin(latitude);
  return std::tan(std::numbers::pi / 4 - latitude / 2) * std::pow((1 + s) / (1 - s), e / 2);
}

// Polar Stereographic: metres from the pole per half tangent, from the scale factor at the pole or
// the latitude of true scale (positive at both poles).
double reach_at_pole(double scale) {
  return 2 * a * scale / std::sqrt(std::pow(1 + e, 1 + e) * std::pow(1 - e, 1 - e));
}
double reach_at_latitude(double latitude_degrees) {
  const double latitude = latitude_degrees * degree;
  const double s = e * std::sin(latitude);
  return a * std::cos(latitude) / std::sqrt(1 - s * s) / half_tangent(latitude);
}
Metres polar(GeographicPoint p, bool south, double reach, double longitude, Metres origin) {
  const double latitude = (south ? -1 : 1) * p.latitude_degrees * degree;
  const double from_pole = reach * half_tangent(latitude);
  const double angle = (p.longitude_degrees - longitude) * degree;
  return {origin.x + from_pole * std::sin(angle),
          origin.y + (south ? 1 : -1) * from_pole * std::cos(angle)};
}

// --- The transformation against them ---

const MapProjection utm33{"UTM",
                          {"WGS 84", "metre", "33", "N", "0.9996", std::nullopt, "500000", "0"}};
const MapProjection utm60_south{
    "UTM", {"WGS 84", "metre", "60", "S", "0.9996", std::nullopt, "500000", "10000000"}};
const MapProjection north_true_scale{"Polar Stereographic",
                                     {"WGS 84", "metre", "-45", "N", "70", std::nullopt, "0", "0"}};
const MapProjection south_true_scale{
    "Polar Stereographic",
    {"WGS 84", "metre", "70", "S", "-71", std::nullopt, "6000000", "6000000"}};
const MapProjection north_pole_scale{
    "Polar Stereographic",
    {"WGS 84", "metre", "0", "N", std::nullopt, "0.994", "2000000", "2000000"}};
const MapProjection south_pole_scale{
    "Polar Stereographic",
    {"WGS 84", "metre", "0", "S", std::nullopt, "0.994", "2000000", "2000000"}};

const MapInfo grid{"", {399997.5, 5300001.25}, {2.5, -1.25}, "metre"};

// The projection's metres of a place, compared with its pixel both ways: 1 mm in x and y.
void expect_at(const MapTransform& transform, GeographicPoint place, Metres expected) {
  const ImagePoint pixel = transform.to_image(place);
  EXPECT_NEAR(399997.5 + 2.5 * (pixel.sample + 0.5), expected.x, 1e-3);
  EXPECT_NEAR(5300001.25 - 1.25 * (pixel.line + 0.5), expected.y, 1e-3);
  const GeographicPoint back = transform.to_ground(
      {(expected.x - 399997.5) / 2.5 - 0.5, (5300001.25 - expected.y) / 1.25 - 0.5});
  const double metres_a_degree = a * degree;
  EXPECT_NEAR((back.latitude_degrees - place.latitude_degrees) * metres_a_degree, 0, 1e-3);
  const double apart = std::remainder(back.longitude_degrees - place.longitude_degrees, 360);
  EXPECT_NEAR(apart * metres_a_degree * std::cos(place.latitude_degrees * degree), 0, 1e-3);
}

TEST(MapTransform, AgreesWithTheTransverseMercatorSeries) {
  const MapTransform north(grid, utm33);
  const MapTransform south(grid, utm60_south);
  for (const double latitude : {0.0, 1e-4, 12.5, 48.123456, 65.0, 83.9}) {
    for (const double off : {-3.5, -3.0, -0.25, 0.0, 1.75, 3.0, 4.0}) {
      expect_at(north, {latitude, 15 + off}, utm({latitude, 15 + off}, 33, false));
      // Zone 60 ends at the date line.
      const double east = 177 + off > 180 ? 177 + off - 360 : 177 + off;
      expect_at(south, {-latitude, east}, utm({-latitude, 177 + off}, 60, true));
    }
  }
}

TEST(MapTransform, AgreesWithThePolarStereographicFormulas) {
  struct Case {
    MapProjection projection;
    bool south;
    double reach;
    double longitude;
    Metres origin;
  };
  const Case cases[] = {{north_true_scale, false, reach_at_latitude(70), -45, {0, 0}},
                        {south_true_scale, true, reach_at_latitude(71), 70, {6e6, 6e6}},
                        {north_pole_scale, false, reach_at_pole(0.994), 0, {2e6, 2e6}},
                        {south_pole_scale, true, reach_at_pole(0.994), 0, {2e6, 2e6}}};
  for (const Case& c : cases) {
    const MapTransform transform(grid, c.projection);
    for (const double latitude : {60.5, 71.0, 80.25, 89.0, 89.9999}) {
      for (const double longitude : {-179.9, -90.0, -45.0, 0.0, 33.3, 70.0, 135.0, 180.0}) {
        const GeographicPoint place{c.south ? -latitude : latitude, longitude};
        expect_at(transform, place, polar(place, c.south, c.reach, c.longitude, c.origin));
      }
    }
    const ImagePoint pole = transform.to_image({c.south ? -90.0 : 90.0, 12});
    EXPECT_NEAR(399997.5 + 2.5 * (pole.sample + 0.5), c.origin.x, 1e-3);
  }
}

TEST(MapTransform, PixelCentresLieAtWholeNumbers) {
  // 500 km east on the equator is the central meridian; the first pixel's centre lies there.
  const MapTransform transform({"", {499995, 5}, {10, -10}, "metre"}, utm33);
  const GeographicPoint first = transform.to_ground({0, 0});
  EXPECT_NEAR(first.latitude_degrees, 0, 1e-9);
  EXPECT_NEAR(first.longitude_degrees, 15, 1e-9);
  EXPECT_GT(transform.to_ground({1, 0}).longitude_degrees, 15);
  EXPECT_LT(transform.to_ground({0, 1}).latitude_degrees, 0);
  const ImagePoint back = transform.to_image({0, 15});
  EXPECT_NEAR(back.sample, 0, 1e-6);
  EXPECT_NEAR(back.line, 0, 1e-6);
}

TEST(MapTransform, ImagesWithSouthUpRunNorthwards) {
  const MapTransform transform({"", {499995, -5}, {10, 10}, "metre"}, utm33);
  EXPECT_NEAR(transform.to_ground({0, 0}).latitude_degrees, 0, 1e-9);
  EXPECT_GT(transform.to_ground({0, 1}).latitude_degrees, 0);
}

// The shift from WGS 72 is published as: 4.5 m along the axis, 0.554 arc seconds about it, scale
// 0.219e-6. On the equator the turn alone moves a place, in its longitude.
TEST(MapTransform, OtherDatumsAreShifted) {
  MapProjection wgs72 = utm33;
  wgs72.values[0] = "WGS 72";
  const MapTransform transform({"", {499995, 5}, {10, -10}, "metre"}, wgs72);
  const GeographicPoint place = transform.to_ground({0, 0});
  EXPECT_NEAR(place.longitude_degrees, 15 + 0.554 / 3600, 1e-8);
  EXPECT_NEAR(place.latitude_degrees, std::atan2(4.5, a) / degree, 1e-6);
  const ImagePoint back = transform.to_image(place);
  EXPECT_NEAR(back.sample, 0, 1e-4);
  EXPECT_NEAR(back.line, 0, 1e-4);
}

template <class Operation>
std::string refusal(Operation operation) {
  try {
    operation();
  } catch (const gridkit::Error& error) {
    return error.what();
  }
  return "";
}

TEST(MapTransform, RefusesPointsOutOfReach) {
  const MapTransform transform(grid, utm33);
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double infinite = std::numeric_limits<double>::infinity();
  for (const ImagePoint point : {ImagePoint{nan, 0}, {0, infinite}, {1e300, 0}, {1e9, 1e9}}) {
    EXPECT_EQ(refusal([&] { transform.to_ground(point); }),
              "the image point lies outside the map projection's reach");
  }
  EXPECT_EQ(refusal([&] {
              transform.to_image({10, nan});
            }),
            "the ground point lies outside the map projection's reach");
  for (const double latitude : {nan, 90.001, -infinite}) {
    EXPECT_EQ(refusal([&] {
                transform.to_image({latitude, 15});
              }),
              "the ground point's latitude is not in -90 to 90 degrees");
  }
}

TEST(MapTransform, RefusesWhatIsNoGrid) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  for (const MapInfo& info : {MapInfo{"", {nan, 0}, {1, 1}, ""}, MapInfo{"", {0, 0}, {0, 1}, ""},
                              MapInfo{"", {0, 0}, {1, nan}, ""}}) {
    EXPECT_EQ(refusal([&] { MapTransform(info, utm33); }),
              "the map information tells no grid of pixels");
  }
}

TEST(MapTransform, RefusesProjectionsThatDoNotConvert) {
  MapProjection none = utm33;
  none.values[2] = "61";
  EXPECT_EQ(refusal([&] { MapTransform(grid, none); }), "value 4, the zone, is 61, not in 1 to 60");
  MapProjection moon = north_true_scale;
  moon.values[0] = "Moon (2015) - Sphere / Ocentric";
  const std::string told = refusal([&] { MapTransform(grid, moon); });
  EXPECT_TRUE(told.starts_with(
      "no transformation between the datum \"Moon (2015) - Sphere / Ocentric\" and WGS 84: "))
      << told;
}

}  // namespace
