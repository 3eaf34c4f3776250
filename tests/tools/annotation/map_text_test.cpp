#include "tools/annotation/map_text.h"

#include <gtest/gtest.h>

namespace {

AnnotatedMap annotated(const char* projection, const char* zone, double latitude, double northing) {
  AnnotatedMap map;
  map.datum = "WGS84";
  map.projection = projection;
  map.zone = zone;
  map.centre_latitude = latitude;
  map.centre_northing = northing;
  return map;
}

gridkit::MapProjection utm(const char* datum, const char* zone, const char* hemisphere,
                           const char* northing) {
  return {"UTM", {datum, "metre", zone, hemisphere, "0.9996", std::nullopt, "500000", northing}};
}

TEST(MapText, TellsTheSameOfAnnotationAndImage) {
  EXPECT_EQ(map_text(annotated("UTM", "32", 48, 5.3e6)), "UTM zone 32 N, WGS84");
  EXPECT_EQ(map_text(utm("WGS 84", "32", "N", "0")), "UTM zone 32 N, WGS84");
  EXPECT_EQ(map_text(annotated("utm", " 05 ", -33, 6.3e6)), "UTM zone 5 S, WGS84");
  EXPECT_EQ(map_text(utm("WGS 84", "5", "S", "10000000")), "UTM zone 5 S, WGS84");
  EXPECT_EQ(map_text(annotated("UPS", "N", 85, 2e6)), "UPS N, WGS84");
  EXPECT_EQ(map_text({"Polar Stereographic",
                      {"WGS 84", "metre", "0", "N", std::nullopt, "0.994", "2000000", "2000000"}}),
            "UPS N, WGS84");
}

TEST(MapText, FindsTheHemisphereByTheCentresNorthing) {
  // A scene close to the equator may lie in the zone of the other hemisphere.
  EXPECT_EQ(map_text(annotated("UTM", "33", 0.01, 1105.0)), "UTM zone 33 N, WGS84");
  EXPECT_EQ(map_text(annotated("UTM", "33", 0.01, 10001105.0)), "UTM zone 33 S, WGS84");
  EXPECT_EQ(map_text(annotated("UTM", "33", -0.01, -1105.0)), "UTM zone 33 N, WGS84");
  EXPECT_EQ(map_text(annotated("UTM", "33", -0.01, 9998895.0)), "UTM zone 33 S, WGS84");
  EXPECT_EQ(map_text(annotated("UPS", "", -85, 2e6)), "UPS S, WGS84");
}

TEST(MapText, IsNothingForWhatCannotBeCompared) {
  for (const char* zone : {"", "x", "0", "61", "-1"}) {
    EXPECT_EQ(map_text(annotated("UTM", zone, 48, 5.3e6)), std::nullopt) << zone;
  }
  EXPECT_EQ(map_text(annotated("LAMBERT", "32", 48, 5.3e6)), std::nullopt);
}

TEST(MapText, KeepsProjectionsOfTheSameMethodApart) {
  gridkit::MapProjection scaled = utm("WGS 84", "32", "N", "0");
  scaled.values[4] = "1";
  EXPECT_EQ(map_text(scaled), "UTM with constants of its own, WGS84");
  EXPECT_EQ(map_text(utm("WGS 84", "32", "N", "10000000")), "UTM with constants of its own, WGS84");
  const gridkit::MapProjection arctic{
      "Polar Stereographic", {"WGS 84", "metre", "-45", "N", "70", std::nullopt, "0", "0"}};
  EXPECT_EQ(map_text(arctic), "Polar Stereographic, WGS84");
}

}  // namespace
