#include "gridkit/map_projection.h"

#include <cpl_conv.h>
#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <charconv>
#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <thread>

#include "gridkit/memory.h"
#include "tests/platform/gridkit/map_image.h"
#include "tests/support/scratch_folder.h"

namespace {

struct ProjectionDeleter {
  void operator()(gkj_Projection* projection) const { gkj_ProjectionFree(&projection); }
};
using Projection = std::unique_ptr<gkj_Projection, ProjectionDeleter>;

// The name and the values 2 to 9; "-" stands for null, so that a table of them reads well.
using Nine = std::array<std::string, 9>;

Nine to_mif(const gkj_Projection* projection, gke_Report** err = nullptr) {
  char* name = nullptr;
  std::array<void*, 8> v{};
  gkj_ProjectionConvertToMIF(projection, &name, &v[0], &v[1], &v[2], &v[3], &v[4], &v[5], &v[6],
                             &v[7], err);
  Nine nine;
  nine[0] = name == nullptr ? "-" : name;
  gkm_HeapFree(name);
  for (std::size_t i = 0; i < v.size(); ++i) {
    nine[i + 1] = v[i] == nullptr ? "-" : static_cast<char*>(v[i]);
    gkm_HeapFree(v[i]);
  }
  return nine;
}

Projection from_mif(Nine nine, gke_Report** err = nullptr) {
  const auto v = [&](std::size_t number) -> void* {
    std::string& text = nine[number - 1];
    return text == "-" ? nullptr : text.data();
  };
  return Projection(gkj_ProjectionConvertFromMIF(static_cast<const char*>(v(1)), v(2), v(3), v(4),
                                                 v(5), v(6), v(7), v(8), v(9), err));
}

int mark_of(const Projection& projection) {
  return gkj_MapProjectionCSRGet(projection.get(), "Gkj_ProParameters")->support->mark;
}

double number(const std::string& text) {
  double value = std::numeric_limits<double>::quiet_NaN();
  std::from_chars(text.data(), text.data() + text.size(), value);
  return value;
}

// The reference that nine values stand for, put together by another hand: the datum by its code.
Reference reference_of(const Nine& nine, const char* datum) {
  Reference reference(OSRNewSpatialReference(nullptr));
  OSRSetProjCS(reference.get(), "derived");
  OSRCopyGeogCSFrom(reference.get(), reference_by(datum).get());
  if (nine[0] == "UTM") {
    OSRSetUTM(reference.get(), std::stoi(nine[3]), nine[4] == "N" ? 1 : 0);
  } else {
    const double pole = nine[4] == "N" ? 90 : -90;
    const double latitude = nine[5] == "-" ? pole : number(nine[5]);
    const double scale = nine[6] == "-" ? 1 : number(nine[6]);
    OSRSetPS(reference.get(), latitude, number(nine[3]), scale, number(nine[7]), number(nine[8]));
  }
  return reference;
}

class MapProjections : public testing::Test {
 protected:
  Projection read(const MapImage& image) {
    write_map_image(path, image);
    const OpenLayer layer = open_layer(path);
    gkj_Projection* projection = nullptr;
    EXPECT_EQ(
        report_of([&](auto* err) { gkl_LayerMapProjectionRead(layer.get(), &projection, err); }),
        "");
    return Projection(projection);
  }
  std::string refusal(const MapImage& image) {
    write_map_image(path, image);
    const OpenLayer layer = open_layer(path);
    gkj_Projection* projection = nullptr;
    std::string told =
        report_of([&](auto* err) { gkl_LayerMapProjectionRead(layer.get(), &projection, err); });
    EXPECT_EQ(projection, nullptr);
    return told;
  }
  static std::string refusal_to(const Projection& projection) {
    return report_of([&](auto* err) {
      for (const std::string& value : to_mif(projection.get(), err)) EXPECT_EQ(value, "-");
    });
  }
  static std::string refusal_from(const Nine& nine) {
    return report_of([&](auto* err) { EXPECT_EQ(from_mif(nine, err), nullptr); });
  }

  const ScratchFolder scratch;
  const std::string path = scratch / "map.tif";
};

const Nine utm33 = {"UTM", "WGS 84", "metre", "33", "N", "0.9996", "-", "500000", "0"};
const Nine polar71 = {"Polar Stereographic", "WGS 84", "metre", "-45", "N", "70", "-", "0", "0"};

// --- From GeoTIFF to the nine values and back ---

struct Known {
  const char* definition;
  const char* datum;
  Nine nine;
};

// A user-defined projection with numbers that are no round ones.
const char* const odd_polar =
    R"(PROJCS["own",GEOGCS["WGS 84",DATUM["WGS_1984",SPHEROID["WGS 84",6378137,298.257223563]],
    PRIMEM["Greenwich",0],UNIT["degree",0.0174532925199433],AUTHORITY["EPSG","4326"]],
    PROJECTION["Polar_Stereographic"],PARAMETER["latitude_of_origin",-68.1234567890123],
    PARAMETER["central_meridian",12.3456789012345],PARAMETER["scale_factor",1],
    PARAMETER["false_easting",1234567.89012345],PARAMETER["false_northing",-0.333333333333333],
    UNIT["metre",1]])";

const Known known[] = {
    {"EPSG:32633", "EPSG:4326", utm33},
    {"EPSG:32601", "EPSG:4326", {"UTM", "WGS 84", "metre", "1", "N", "0.9996", "-", "500000", "0"}},
    {"EPSG:32760",
     "EPSG:4326",
     {"UTM", "WGS 84", "metre", "60", "S", "0.9996", "-", "500000", "10000000"}},
    {"EPSG:25832",
     "EPSG:4258",
     {"UTM", "ETRS89", "metre", "32", "N", "0.9996", "-", "500000", "0"}},
    {"EPSG:32333",
     "EPSG:4322",
     {"UTM", "WGS 72", "metre", "33", "S", "0.9996", "-", "500000", "10000000"}},
    {"EPSG:26710", "EPSG:4267", {"UTM", "NAD27", "metre", "10", "N", "0.9996", "-", "500000", "0"}},
    {"EPSG:3413", "EPSG:4326", polar71},
    {"EPSG:3031",
     "EPSG:4326",
     {"Polar Stereographic", "WGS 84", "metre", "0", "S", "-71", "-", "0", "0"}},
    {"EPSG:3032",
     "EPSG:4326",
     {"Polar Stereographic", "WGS 84", "metre", "70", "S", "-71", "-", "6000000", "6000000"}},
    {"EPSG:5041",
     "EPSG:4326",
     {"Polar Stereographic", "WGS 84", "metre", "0", "N", "-", "0.994", "2000000", "2000000"}},
    {"EPSG:32661",  // the same with its axes the other way round, which a GeoTIFF does not heed
     "EPSG:4326",
     {"Polar Stereographic", "WGS 84", "metre", "0", "N", "-", "0.994", "2000000", "2000000"}},
    {"EPSG:5042",
     "EPSG:4326",
     {"Polar Stereographic", "WGS 84", "metre", "0", "S", "-", "0.994", "2000000", "2000000"}},
    {odd_polar,
     "EPSG:4326",
     {"Polar Stereographic", "WGS 84", "metre", "12.3456789012345", "S", "-68.1234567890123", "-",
      "1234567.89012345", "-0.333333333333333"}}};

TEST_F(MapProjections, AreToldInNineValues) {
  for (const Known& k : known) {
    const Projection projection = read({k.definition});
    ASSERT_NE(projection, nullptr) << k.definition;
    EXPECT_EQ(to_mif(projection.get()), k.nine) << k.definition;
    EXPECT_EQ(mark_of(projection), 0) << k.definition;
  }
}

TEST_F(MapProjections, LoseNothingOnTheWayThroughTheNineValues) {
  constexpr const char* axes_aside[] = {"IGNORE_DATA_AXIS_TO_SRS_AXIS_MAPPING=YES", nullptr};
  for (const Known& k : known) {
    const Projection back = from_mif(to_mif(read({k.definition}).get()));
    ASSERT_NE(back, nullptr) << k.definition;
    const Nine again = to_mif(back.get());
    EXPECT_EQ(again, k.nine) << k.definition;
    EXPECT_EQ(mark_of(back), 0) << k.definition;
    EXPECT_TRUE(OSRIsSameEx(reference_by(k.definition).get(), reference_of(again, k.datum).get(),
                            axes_aside))
        << k.definition;
  }
}

TEST_F(MapProjections, AllZonesOfBothHemispheresComeBack) {
  for (int zone = 1; zone <= 60; ++zone) {
    for (const int base : {32600, 32700}) {
      const Nine nine = to_mif(read({"EPSG:" + std::to_string(base + zone)}).get());
      EXPECT_EQ(nine[0], "UTM");
      EXPECT_EQ(nine[3], std::to_string(zone));
      EXPECT_EQ(nine[4], base == 32600 ? "N" : "S");
      EXPECT_EQ(to_mif(from_mif(nine).get()), nine);
    }
  }
}

TEST_F(MapProjections, KeepEveryBitOfANumber) {
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

TEST_F(MapProjections, AHeightSystemIsNoPartOfThem) {
  EXPECT_EQ(to_mif(read({"EPSG:32633+5773"}).get()), utm33);
}

TEST_F(MapProjections, AGridRotatedOrMissingDoesNotMatter) {
  EXPECT_EQ(to_mif(read({"EPSG:32633", nullptr}).get()), utm33);
}

// --- What has no nine values ---

std::string utm_wkt(const std::string& datum, const std::string& scale,
                    const std::string& meridian = "15") {
  return "PROJCS[\"own\",GEOGCS[" + datum +
         ",PRIMEM[\"Greenwich\",0],UNIT[\"degree\",0.0174532925199433]],"
         "PROJECTION[\"Transverse_Mercator\"],PARAMETER[\"latitude_of_origin\",0],"
         "PARAMETER[\"central_meridian\"," +
         meridian + "],PARAMETER[\"scale_factor\"," + scale +
         "],PARAMETER[\"false_easting\",500000],PARAMETER[\"false_northing\",0],"
         "UNIT[\"metre\",1]]";
}
const std::string wgs84 = R"("WGS 84",DATUM["WGS_1984",SPHEROID["WGS 84",6378137,298.257223563]])";

TEST_F(MapProjections, OthersAreReadAndMarkedButNotConverted) {
  for (const auto& [definition, name] : {std::pair{"EPSG:3035", "ETRS89-extended / LAEA Europe"},
                                         {"EPSG:31467", "DHDN / 3-degree Gauss-Kruger zone 3"},
                                         {"EPSG:2263", "NAD83 / New York Long Island (ftUS)"},
                                         {"EPSG:4326", "Geographic"}}) {
    const Projection projection = read({definition});
    ASSERT_NE(projection, nullptr) << definition;
    EXPECT_EQ(mark_of(projection), 1) << definition;
    EXPECT_EQ(refusal_to(projection), "gkj_ProjectionConvertToMIF: the projection \"" +
                                          std::string(name) +
                                          "\" is none of UTM and Polar Stereographic in metres");
  }
}

TEST_F(MapProjections, NearlyUtmIsNotUtm) {
  for (const std::string& definition :
       {utm_wkt(wgs84, "0.99960001"), utm_wkt(wgs84, "0.9996", "15.0001")}) {
    const Projection projection = read({definition});
    EXPECT_EQ(mark_of(projection), 1);
    EXPECT_EQ(refusal_to(projection),
              "gkj_ProjectionConvertToMIF: the projection \"own\" is none of UTM and Polar "
              "Stereographic in metres");
  }
  EXPECT_EQ(to_mif(read({utm_wkt(wgs84, "0.9996")}).get()), utm33);
}

TEST_F(MapProjections, ADatumThatIsNotWhatItsNameSaysIsNotTold) {
  const Projection unknown =
      read({utm_wkt(R"("Atlantis 1900",DATUM["Atlantis",SPHEROID["own",6377000,299]])", "0.9996")});
  EXPECT_EQ(mark_of(unknown), 1);
  EXPECT_EQ(refusal_to(unknown),
            "gkj_ProjectionConvertToMIF: the datum \"Atlantis 1900\" is not in the PROJ database");
  const Projection false_name =
      read({utm_wkt(R"("WGS 84",DATUM["Atlantis",SPHEROID["own",6377000,299]])", "0.9996")});
  EXPECT_EQ(mark_of(false_name), 1);
  EXPECT_EQ(refusal_to(false_name),
            "gkj_ProjectionConvertToMIF: the datum \"WGS 84\" is not the one of this name in the "
            "PROJ database");
}

TEST_F(MapProjections, AShiftOfDatumOfTheFilesOwnIsNotLeftOut) {
  const std::string ed50 = R"("ED50",DATUM["European_Datum_1950",SPHEROID["International 1924",)"
                           R"(6378388,297])";
  EXPECT_EQ(to_mif(read({utm_wkt(ed50 + "]", "0.9996")}).get())[1], "ED50");
  // GDAL takes a shift for no part of a known datum unless it is told otherwise.
  CPLSetThreadLocalConfigOption("OSR_STRIP_TOWGS84", "NO");
  const Projection shifted = read({utm_wkt(ed50 + ",TOWGS84[10,20,30,0,0,0,0]]", "0.9996")});
  CPLSetThreadLocalConfigOption("OSR_STRIP_TOWGS84", nullptr);
  EXPECT_EQ(mark_of(shifted), 1);
  EXPECT_EQ(refusal_to(shifted),
            "gkj_ProjectionConvertToMIF: the datum \"ED50\" is not the one of this name in the "
            "PROJ database");
}

TEST_F(MapProjections, APolarStereographicScaledTwiceIsNotTold) {
  const Projection twice = read({
      R"(PROJCS["own",GEOGCS["WGS 84",DATUM["WGS_1984",SPHEROID["WGS 84",6378137,298.257223563]],
      PRIMEM["Greenwich",0],UNIT["degree",0.0174532925199433]],PROJECTION["Polar_Stereographic"],
      PARAMETER["latitude_of_origin",71],PARAMETER["central_meridian",0],
      PARAMETER["scale_factor",0.994],PARAMETER["false_easting",0],PARAMETER["false_northing",0],
      UNIT["metre",1]])"});
  EXPECT_EQ(mark_of(twice), 1);
  EXPECT_EQ(refusal_to(twice),
            "gkj_ProjectionConvertToMIF: the projection \"own\" is none of UTM and Polar "
            "Stereographic in metres");
}

TEST_F(MapProjections, LayersWithoutOneAreReported) {
  EXPECT_EQ(refusal({""}), "gkl_LayerMapProjectionRead: the image has no map projection");
  EXPECT_EQ(refusal({R"(LOCAL_CS["site",UNIT["metre",1]])"}),
            "gkl_LayerMapProjectionRead: the image's coordinate system \"site\" is no map "
            "projection");
}

// --- From the nine values ---

TEST_F(MapProjections, NineValuesThatGeoTiffKeysCannotKeepAreMarked) {
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

TEST_F(MapProjections, RefuseHostileValuesByName) {
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

// --- Records ---

TEST_F(MapProjections, OnlyTheParametersByTheirTypeNameAreTold) {
  const Projection projection = from_mif(utm33);
  EXPECT_NE(gkj_MapProjectionCSRGet(projection.get(), "Gkj_ProParameters"), nullptr);
  EXPECT_EQ(gkj_MapProjectionCSRGet(projection.get(), "gkj_ProParameters"), nullptr);
  EXPECT_EQ(gkj_MapProjectionCSRGet(projection.get(), nullptr), nullptr);
  EXPECT_EQ(gkj_MapProjectionCSRGet(nullptr, "Gkj_ProParameters"), nullptr);
}

TEST_F(MapProjections, AnswerNullsWithReports) {
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

// --- The PROJ database and the network ---

// PROJ opens its database once a thread, so one that starts without it never finds it.
TEST_F(MapProjections, SayThatTheProjDatabaseIsMissing) {
  const std::string polar_path = scratch / "polar.tif";
  write_map_image(polar_path, {"EPSG:32661"});
  write_map_image(path, {"EPSG:32633"});
  std::string from;
  std::string info;
  std::string to;
  constexpr const char* nowhere[] = {"/nonexistent", nullptr};
  OSRSetPROJSearchPaths(nowhere);
  std::thread([&] {
    from = refusal_from(utm33);
    const OpenLayer polar = open_layer(polar_path);
    info = report_of([&](auto* err) { gkl_MapInfoRead(polar.get(), 0, err); });
    const OpenLayer utm = open_layer(path);
    gkj_Projection* projection = nullptr;
    gkl_LayerMapProjectionRead(utm.get(), &projection, nullptr);
    to = refusal_to(Projection(projection));
    OSRCleanup();
  }).join();
  OSRSetPROJSearchPaths(nullptr);
  const std::string told =
      "the PROJ database cannot be read (is PROJ_LIB the folder of proj.db?): PROJ: ";
  EXPECT_TRUE(from.starts_with("gkj_ProjectionConvertFromMIF: " + told)) << from;
  EXPECT_TRUE(info.starts_with("gkl_MapInfoRead: " + told)) << info;
  EXPECT_TRUE(to.starts_with("gkj_ProjectionConvertToMIF: " + told)) << to;
}

TEST_F(MapProjections, LeaveTheNetworkAsTheUserSetIt) {
  for (const int enabled : {1, 0}) {
    OSRSetPROJEnableNetwork(enabled);
    from_mif(utm33);
    EXPECT_EQ(OSRGetPROJEnableNetwork(), enabled);
  }
}

}  // namespace
