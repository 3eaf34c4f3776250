#include <cpl_conv.h>
#include <gtest/gtest.h>

#include <fstream>
#include <limits>
#include <memory>
#include <string>

#include "gridkit/map_projection.h"
#include "tests/platform/gridkit/maps/map_image.h"
#include "tests/support/scratch_folder.h"

namespace {

struct InfoDeleter {
  void operator()(gkj_MapInfo* info) const { gkj_MapInfoFree(&info); }
};
using Info = std::unique_ptr<gkj_MapInfo, InfoDeleter>;

class MapInformation : public testing::Test {
 protected:
  Info read(const MapImage& image) {
    write_map_image(path, image);
    const OpenLayer layer = open_layer(path);
    gke_Report* report = nullptr;
    Info info(gkl_MapInfoRead(layer.get(), 0, &report));
    EXPECT_EQ(report, nullptr) << gke_ReportMessage(report);
    gke_DeleteErrorReportEx(&report);
    return info;
  }
  std::string refusal(const MapImage& image) {
    write_map_image(path, image);
    const OpenLayer layer = open_layer(path);
    return report_of([&](auto* err) { EXPECT_EQ(gkl_MapInfoRead(layer.get(), 0, err), nullptr); });
  }

  const ScratchFolder scratch;
  const std::string path = scratch / "map.tif";
};

TEST_F(MapInformation, TellsCornerAndPixelSizeOfAUtmImage) {
  const Info info = read({"EPSG:32633"});
  ASSERT_NE(info, nullptr);
  EXPECT_STREQ(info->projectionName, "UTM");
  EXPECT_STREQ(info->units, "metre");
  EXPECT_EQ(info->upperLeft[0], 500010);
  EXPECT_EQ(info->upperLeft[1], 5200020);
  EXPECT_EQ(info->pixelSize[0], 2.5);
  EXPECT_EQ(info->pixelSize[1], 1.25);
}

TEST_F(MapInformation, NamesTheProjectionByItsMethod) {
  for (const auto& [code, name] : {std::pair{"EPSG:32733", "UTM"},
                                   {"EPSG:25832", "UTM"},
                                   {"EPSG:32333", "UTM"},
                                   {"EPSG:3031", "Polar Stereographic"},
                                   {"EPSG:3413", "Polar Stereographic"},
                                   {"EPSG:5041", "Polar Stereographic"},
                                   {"EPSG:32761", "Polar Stereographic"},
                                   {"EPSG:3035", "ETRS89-extended / LAEA Europe"},
                                   {"EPSG:3857", "WGS 84 / Pseudo-Mercator"},
                                   {"EPSG:31467", "DHDN / 3-degree Gauss-Kruger zone 3"}}) {
    const Info info = read({code});
    ASSERT_NE(info, nullptr) << code;
    EXPECT_STREQ(info->projectionName, name) << code;
  }
}

TEST_F(MapInformation, GeographicImagesAreInDegrees) {
  constexpr Grid grid = {11.5, 0.001, 0, 48.25, 0, -0.002};
  const Info info = read({"EPSG:4326", &grid});
  ASSERT_NE(info, nullptr);
  EXPECT_STREQ(info->projectionName, "Geographic");
  EXPECT_STREQ(info->units, "degree");
  EXPECT_EQ(info->upperLeft[0], 11.5) << "x is the longitude";
  EXPECT_EQ(info->upperLeft[1], 48.25);
  EXPECT_EQ(info->pixelSize[1], 0.002);
}

TEST_F(MapInformation, OtherUnitsHaveTheirOwnName) {
  const Info info = read({"EPSG:2263"});  // a state plane in feet
  ASSERT_NE(info, nullptr);
  EXPECT_STREQ(info->units, "US survey foot");
  EXPECT_EQ(info->pixelSize[0], 2.5) << "numbers are in these units";
}

TEST_F(MapInformation, AnImageWithSouthUpHasANegativePixelHeight) {
  constexpr Grid grid = {500010, 2.5, 0, 5200020, 0, 1.25};
  const Info info = read({"EPSG:32633", &grid});
  ASSERT_NE(info, nullptr);
  EXPECT_EQ(info->pixelSize[1], -1.25);
  EXPECT_EQ(info->upperLeft[1], 5200020);
}

// A file whose pixels are points ties the centre of the first pixel to the map; the corner lies
// half a pixel outside of it.
TEST_F(MapInformation, TheCornerIsTheOuterOneInFilesOfPointsToo) {
  write_map_image(path, {"EPSG:32633", &upright, "Point"});
  CPLSetThreadLocalConfigOption("GTIFF_POINT_GEO_IGNORE", "TRUE");
  GDALDatasetH file = GDALOpen(path.c_str(), GA_ReadOnly);
  Grid tied{};
  GDALGetGeoTransform(file, tied.data());
  GDALClose(file);
  CPLSetThreadLocalConfigOption("GTIFF_POINT_GEO_IGNORE", nullptr);
  EXPECT_EQ(tied[0], 500010 + 1.25) << "the tie point in the file is the centre";
  EXPECT_EQ(tied[3], 5200020 - 0.625);

  const OpenLayer layer = open_layer(path);
  const Info info(gkl_MapInfoRead(layer.get(), 0, nullptr));
  ASSERT_NE(info, nullptr);
  EXPECT_EQ(info->upperLeft[0], 500010);
  EXPECT_EQ(info->upperLeft[1], 5200020);
}

TEST_F(MapInformation, ImagesWithoutAMapAreReported) {
  EXPECT_EQ(refusal({"", nullptr}), "gkl_MapInfoRead: the image has no map projection");
  EXPECT_EQ(refusal({""}), "gkl_MapInfoRead: the image has no map projection");
  EXPECT_EQ(refusal({"EPSG:32633", nullptr}),
            "gkl_MapInfoRead: the image tells no place on its map");
  EXPECT_EQ(refusal({R"(LOCAL_CS["site",UNIT["metre",1]])"}),
            "gkl_MapInfoRead: the image's coordinate system \"site\" is no map projection");
}

TEST_F(MapInformation, RotatedAndDegenerateGridsAreReported) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  constexpr Grid rotated = {500010, 2.5, 0.1, 5200020, 0, -1.25};
  constexpr Grid sheared = {500010, 2.5, 0, 5200020, 0.1, -1.25};
  constexpr Grid flat = {500010, 0, 0, 5200020, 0, -1.25};
  const Grid nowhere = {nan, 2.5, 0.1, 5200020, 0, -1.25};
  for (const Grid* grid : {&rotated, &sheared}) {
    EXPECT_EQ(refusal({"EPSG:32633", grid}),
              "gkl_MapInfoRead: the image is rotated against its map");
  }
  EXPECT_NE(refusal({"EPSG:32633", &flat}), "");
  EXPECT_EQ(refusal({"EPSG:32633", &nowhere}),
            "gkl_MapInfoRead: the image's place on its map is no number");
}

TEST_F(MapInformation, FilesBesideTheImageHaveNoSay) {
  write_map_image(path, {"", nullptr});
  std::ofstream(scratch / "map.tfw") << "2.5\n0\n0\n-1.25\n500010\n5200020\n";
  std::ofstream(path + ".aux.xml")
      << "<PAMDataset><SRS>EPSG:32633</SRS>"
         "<GeoTransform>500010, 2.5, 0, 5200020, 0, -1.25</GeoTransform></PAMDataset>";
  const OpenLayer layer = open_layer(path);
  EXPECT_EQ(report_of([&](auto* err) { gkl_MapInfoRead(layer.get(), 0, err); }),
            "gkl_MapInfoRead: the image has no map projection");

  write_map_image(path, {"EPSG:32633", nullptr});
  const OpenLayer unplaced = open_layer(path);
  EXPECT_EQ(report_of([&](auto* err) { gkl_MapInfoRead(unplaced.get(), 0, err); }),
            "gkl_MapInfoRead: the image tells no place on its map");
}

TEST_F(MapInformation, AnswersANullLayerWithAReport) {
  EXPECT_EQ(report_of([](auto* err) { EXPECT_EQ(gkl_MapInfoRead(nullptr, 0, err), nullptr); }),
            "gkl_MapInfoRead: no layer");
  EXPECT_EQ(gkl_MapInfoRead(nullptr, 0, nullptr), nullptr);
}

TEST_F(MapInformation, FreeClearsTheVariable) {
  gkj_MapInfo* info = read({"EPSG:32633"}).release();
  gkj_MapInfoFree(&info);
  EXPECT_EQ(info, nullptr);
  gkj_MapInfoFree(&info);
  gkj_MapInfoFree(nullptr);
}

}  // namespace
