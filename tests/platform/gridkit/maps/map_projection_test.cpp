#include "gridkit/map_projection.h"

#include <cpl_conv.h>
#include <gtest/gtest.h>

#include <string>
#include <thread>

#include "tests/platform/gridkit/maps/nine_values.h"
#include "tests/support/scratch_folder.h"

namespace {

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

  const ScratchFolder scratch;
  const std::string path = scratch / "map.tif";
};

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

}  // namespace
