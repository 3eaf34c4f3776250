#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <charconv>
#include <cstdint>
#include <string>

#include "gridkit/map_projection.h"
#include "tests/platform/gridkit/maps/nine_values.h"

namespace {

TEST(ProjectionFromNineValues, KeepEveryBitOfANumber) {
  for (const double value : {1.0 / 3, 1e-300, 1e9, -0.0, 0.1 + 0.2, 5e-324, 123456789.123456789}) {
    std::array<char, 64> digits{};
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr;
    Nine nine = utm33;
    nine[0] = "Polar Stereographic";
    nine[5] = "-";
    nine[6] = "0.97276901289";
    nine[7] = std::string(digits.data(), end);
    const Projection projection = from_mif(nine);
    ASSERT_NE(projection, nullptr) << nine[7];
    const double back = number(to_mif(projection.get())[7]);
    EXPECT_EQ(std::bit_cast<std::uint64_t>(back), std::bit_cast<std::uint64_t>(value)) << nine[7];
  }
}

TEST(ProjectionFromNineValues, NineValuesThatGeoTiffKeysCannotKeepAreMarked) {
  Nine scaled = utm33;
  scaled[5] = "1";
  Nine moved = utm33;
  moved[7] = "500000.5";
  Nine north = utm33;
  north[8] = "10000000";
  Nine moon = polar71;
  moon[1] = "Moon (2015) - Sphere / Ocentric";
  for (const Nine& nine : {scaled, moved, north, moon}) {
    const Projection projection = from_mif(nine);
    ASSERT_NE(projection, nullptr);
    EXPECT_EQ(mark_of(projection), 1);
    EXPECT_EQ(to_mif(projection.get()), nine);
  }
}

TEST(ProjectionFromNineValues, RefuseHostileValuesByName) {
  struct Case {
    Nine base;
    std::size_t number;
    std::string text;
    std::string told;
  };
  const std::string nine_digits(201, '7');
  const Nine utm = utm33;
  const Nine polar = polar71;
  const Case cases[] = {
      {utm, 1, "-", "the projection has no name"},
      {utm, 1, "", "the projection \"\" is none of UTM and Polar Stereographic"},
      {utm, 1, "utm", "the projection \"utm\" is none of UTM and Polar Stereographic"},
      {utm, 1, nine_digits, "the name is longer than 200 characters"},
      {utm, 2, "-", "value 2, the datum, is missing"},
      {utm, 2, "", "value 2, the datum, is missing"},
      {utm, 2, "EPSG:4326", "the datum \"EPSG:4326\" is not in the PROJ database"},
      {utm, 2, "/etc/passwd", "the datum \"/etc/passwd\" is not in the PROJ database"},
      {utm, 2, "\xff\xfe%s", "the datum \"\xff\xfe%s\" is not in the PROJ database"},
      {utm, 2, nine_digits, "value 2 is longer than 200 characters"},
      {utm, 3, "-", "value 3, the units, is missing"},
      {utm, 3, "foot", "value 3, the units, is \"foot\", not \"metre\""},
      {utm, 4, "-", "value 4, the zone, is missing"},
      {utm, 4, "", "value 4, the zone, is missing"},
      {utm, 4, "0", "value 4, the zone, is 0, not in 1 to 60"},
      {utm, 4, "61", "value 4, the zone, is 61, not in 1 to 60"},
      {utm, 4, "33N", "value 4, the zone, is \"33N\", not a whole number"},
      {utm, 4, "99999999999", "value 4, the zone, is \"99999999999\", not a whole number"},
      {utm, 4, nine_digits, "value 4 is longer than 200 characters"},
      {utm, 5, "-", "value 5, the hemisphere, is missing"},
      {utm, 5, "n", "value 5, the hemisphere, is \"n\", not \"N\" or \"S\""},
      {utm, 6, "-", "value 6, the scale factor, is missing"},
      {utm, 6, "nan", "value 6, the scale factor, is \"nan\", not a number"},
      {utm, 6, "0", "value 6, the scale factor, is 0, not in 0.01 to 100"},
      {utm, 7, "1", "value 7, the scale factor at the pole, is none of UTM's"},
      {utm, 8, "inf", "value 8, the false easting, is \"inf\", not a number"},
      {utm, 8, "1e400", "value 8, the false easting, is \"1e400\", not a number"},
      {utm, 8, "-2e9",
       "value 8, the false easting, is -2000000000, not in -1000000000 to 1000000000"},
      {utm, 9, "1,5", "value 9, the false northing, is \"1,5\", not a number"},
      {utm, 9, "-", "value 9, the false northing, is missing"},
      {polar, 4, "361", "value 4, the longitude from the pole, is 361, not in -360 to 360"},
      {polar, 5, "-", "value 5, the pole, is missing"},
      {polar, 5, "S", "value 6, the latitude of true scale, is 70, not in -89.9999 to -0.0001"},
      {polar, 6, "-", "value 7, the scale factor at the pole, is missing"},
      {polar, 6, "90", "value 6, the latitude of true scale, is 90, not in 0.0001 to 89.9999"},
      {polar, 7, "1",
       "value 7, the scale factor at the pole, stands beside the latitude of true scale"}};
  for (const Case& c : cases) {
    Nine nine = c.base;
    nine[c.number - 1] = c.text;
    EXPECT_EQ(refusal_from(nine), "gkj_ProjectionConvertFromMIF: " + c.told);
  }
  EXPECT_EQ(refusal_from({"-", "-", "-", "-", "-", "-", "-", "-", "-"}),
            "gkj_ProjectionConvertFromMIF: the projection has no name");
  EXPECT_EQ(from_mif({"-", "-", "-", "-", "-", "-", "-", "-", "-"}), nullptr) << "without a slot";
}

TEST(ProjectionFromNineValues, OnlyTheParametersByTheirTypeNameAreTold) {
  const Projection projection = from_mif(utm33);
  EXPECT_NE(gkj_MapProjectionCSRGet(projection.get(), "Gkj_ProParameters"), nullptr);
  EXPECT_EQ(gkj_MapProjectionCSRGet(projection.get(), "gkj_ProParameters"), nullptr);
  EXPECT_EQ(gkj_MapProjectionCSRGet(projection.get(), nullptr), nullptr);
  EXPECT_EQ(gkj_MapProjectionCSRGet(nullptr, "Gkj_ProParameters"), nullptr);
}

TEST(ProjectionFromNineValues, AnswerNullsWithReports) {
  gkj_Projection* projection = from_mif(utm33).release();
  gkj_Projection* const kept = projection;
  EXPECT_EQ(report_of([&](auto* err) { gkl_LayerMapProjectionRead(nullptr, &projection, err); }),
            "gkl_LayerMapProjectionRead: no layer");
  EXPECT_EQ(projection, nullptr);
  projection = kept;
  EXPECT_EQ(report_of([](auto* err) { gkl_LayerMapProjectionRead(nullptr, nullptr, err); }),
            "gkl_LayerMapProjectionRead: no address for the projection");
  EXPECT_EQ(report_of([](auto* err) { to_mif(nullptr, err); }),
            "gkj_ProjectionConvertToMIF: no projection");
  void* value = nullptr;
  EXPECT_EQ(report_of([&](auto* err) {
              gkj_ProjectionConvertToMIF(projection, nullptr, &value, &value, &value, &value,
                                         &value, &value, &value, &value, err);
            }),
            "gkj_ProjectionConvertToMIF: no address for one of the values");
  gkj_ProjectionFree(&projection);
  EXPECT_EQ(projection, nullptr);
  gkj_ProjectionFree(&projection);
  gkj_ProjectionFree(nullptr);
}

TEST(ProjectionFromNineValues, LeaveTheNetworkAsTheUserSetIt) {
  for (const int enabled : {1, 0}) {
    OSRSetPROJEnableNetwork(enabled);
    from_mif(utm33);
    EXPECT_EQ(OSRGetPROJEnableNetwork(), enabled);
  }
}

}  // namespace
