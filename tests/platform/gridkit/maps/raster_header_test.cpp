#include "gridkit/raster_header.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "tests/platform/gridkit/maps/map_image.h"
#include "tests/support/scratch_folder.h"

namespace {

namespace fs = std::filesystem;

struct Raster {
  int width = 40;
  int height = 30;
  int bands = 1;
  GDALDataType type = GDT_UInt16;
  std::vector<const char*> settings = {"BLOCKYSIZE=1", nullptr};
  bool fill = true;
};

class RasterHeaders : public testing::Test {
 protected:
  gridkit::RasterHeader read(const Raster& raster) {
    GDALRegister_GTiff();
    std::vector<char*> settings;
    for (const char* text : raster.settings) settings.push_back(const_cast<char*>(text));
    GDALDatasetH file = GDALCreate(GDALGetDriverByName("GTiff"), path.c_str(), raster.width,
                                   raster.height, raster.bands, raster.type, settings.data());
    EXPECT_NE(file, nullptr);
    for (int band = 1; raster.fill && band <= raster.bands; ++band) {
      EXPECT_EQ(GDALFillRaster(GDALGetRasterBand(file, band), 7, 0), CE_None);
    }
    GDALClose(file);
    return gridkit::read_raster_header(path);
  }

  const ScratchFolder scratch;
  const std::string path = scratch / "image.tif";
};

TEST_F(RasterHeaders, TellSizeBandsAndDepth) {
  const gridkit::RasterHeader header = read({.bands = 3});
  EXPECT_EQ(header.width, 40);
  EXPECT_EQ(header.height, 30);
  EXPECT_EQ(header.bands, 3);
  EXPECT_EQ(header.sample_bits, 16);
  EXPECT_EQ(header.kind, gridkit::SampleKind::unsigned_integer);
}

TEST_F(RasterHeaders, TellTheKindOfSamples) {
  struct {
    GDALDataType type;
    gridkit::SampleKind kind;
    int bits;
  } const cases[] = {{GDT_Byte, gridkit::SampleKind::unsigned_integer, 8},
                     {GDT_UInt32, gridkit::SampleKind::unsigned_integer, 32},
                     {GDT_Int16, gridkit::SampleKind::signed_integer, 16},
                     {GDT_Float32, gridkit::SampleKind::floating, 32},
                     {GDT_CInt16, gridkit::SampleKind::complex, 32},
                     {GDT_CFloat32, gridkit::SampleKind::complex, 64}};
  for (const auto& each : cases) {
    const gridkit::RasterHeader header = read({.type = each.type});
    EXPECT_EQ(header.kind, each.kind) << each.type;
    EXPECT_EQ(header.sample_bits, each.bits) << each.type;
  }
}

TEST_F(RasterHeaders, TellADepthBetweenTheTypes) {
  EXPECT_EQ(read({.settings = {"NBITS=12", nullptr}}).sample_bits, 12);
}

TEST_F(RasterHeaders, TellWhereTheStoredPixelsEnd) {
  // Strips are stored one after the other, and 40 x 30 samples of two bytes are 2400 bytes.
  const gridkit::RasterHeader whole = read({});
  EXPECT_LE(whole.pixels_end, fs::file_size(path));
  EXPECT_GE(whole.pixels_end, 2400U);
  fs::resize_file(path, whole.pixels_end - 1);
  EXPECT_EQ(gridkit::read_raster_header(path).pixels_end, whole.pixels_end);
  const gridkit::RasterHeader tiled =
      read({.settings = {"TILED=YES", "BLOCKXSIZE=16", "BLOCKYSIZE=16", nullptr}});
  EXPECT_GE(tiled.pixels_end, 3U * 2U * 16U * 16U * 2U);
  EXPECT_LE(tiled.pixels_end, fs::file_size(path));
}

TEST_F(RasterHeaders, LookAtTheLastOfVeryManyStrips) {
  const gridkit::RasterHeader header = read({.width = 1, .height = 100000});
  EXPECT_GE(header.pixels_end, 200000U);
  EXPECT_LE(header.pixels_end, fs::file_size(path));
}

TEST_F(RasterHeaders, ASparseFileStoresNoPixels) {
  const gridkit::RasterHeader header =
      read({.settings = {"SPARSE_OK=YES", nullptr}, .fill = false});
  EXPECT_EQ(header.pixels_end, 0U);
}

TEST_F(RasterHeaders, TellMapAndProjectionWithNorthUpAsANegativeHeight) {
  write_map_image(path, {"EPSG:32733"});
  const gridkit::RasterHeader header = gridkit::read_raster_header(path);
  ASSERT_TRUE(header.map.has_value());
  EXPECT_EQ(header.map->projection, "UTM");
  EXPECT_EQ(header.map->upper_left[0], 500010);
  EXPECT_EQ(header.map->upper_left[1], 5200020);
  EXPECT_EQ(header.map->pixel_size[0], 2.5);
  EXPECT_EQ(header.map->pixel_size[1], -1.25);
  EXPECT_EQ(header.map->units, "metre");
  const gridkit::MapProjection expected{
      "UTM", {"WGS 84", "metre", "33", "S", "0.9996", std::nullopt, "500000", "10000000"}};
  EXPECT_EQ(header.projection, expected);
  EXPECT_EQ(header.why_no_map, "");
}

TEST_F(RasterHeaders, TellWhyThereIsNoMap) {
  const gridkit::RasterHeader header = read({});
  EXPECT_FALSE(header.map.has_value());
  EXPECT_FALSE(header.projection.has_value());
  EXPECT_EQ(header.why_no_map, "the image has no map projection");
}

TEST_F(RasterHeaders, AProjectionWithoutItsMifFormLeavesTheMap) {
  write_map_image(path, {"EPSG:3035"});
  const gridkit::RasterHeader header = gridkit::read_raster_header(path);
  ASSERT_TRUE(header.map.has_value());
  EXPECT_EQ(header.map->projection, "ETRS89-extended / LAEA Europe");
  EXPECT_FALSE(header.projection.has_value());
}

TEST_F(RasterHeaders, RefuseWhatIsNoGeoTiff) {
  std::ofstream(path) << "no image";
  EXPECT_THROW(gridkit::read_raster_header(path), gridkit::Error);
  EXPECT_THROW(gridkit::read_raster_header(scratch / "missing.tif"), gridkit::Error);
}

}  // namespace
