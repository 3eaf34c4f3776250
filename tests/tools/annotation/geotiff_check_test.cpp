#include "tools/annotation/geotiff_check.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

// 100 samples of 80 lines, 2 m apart, whose first pixel's centre lies at 600001, 5000099.
gridkit::RasterHeader header() {
  gridkit::RasterHeader raster;
  raster.width = 100;
  raster.height = 80;
  raster.bands = 1;
  raster.sample_bits = 16;
  raster.pixels_end = 16100;
  raster.map = gridkit::MapInfo{"UTM", {600000, 5000100}, {2, -2}, "metre"};
  raster.projection = gridkit::MapProjection{
      "UTM", {"WGS 84", "metre", "32", "N", "0.9996", std::nullopt, "500000", "0"}};
  return raster;
}

// The last pixel's centre lies 99 columns and 79 lines from the first one's.
AnnotatedImages annotated() {
  AnnotatedImages images;
  images.format = "GEOTIFF";
  images.layers = 1;
  images.lines = 80;
  images.samples = 100;
  images.bits = 16;
  images.map =
      AnnotatedMap{"WGS84", "UTM", "32", 45, 5000000, {2, 2}, {600001, 5000099}, {600199, 4999941}};
  return images;
}

// "WHAT" of each finding, with "?" behind what is not serious.
std::string found(const gridkit::RasterHeader& raster, const AnnotatedImages& images,
                  std::uint64_t bytes = 16100) {
  std::string text;
  for (const ImageFinding& finding : check_geotiff("image.tif", raster, bytes, images)) {
    EXPECT_EQ(finding.path, "image.tif");
    text += finding.what + (finding.serious ? "; " : "?; ");
  }
  return text;
}

TEST(GeoTiffCheck, FindsNothingWhereAllAgrees) {
  EXPECT_EQ(found(header(), annotated()), "");
  AnnotatedImages without = annotated();
  without.map.reset();
  EXPECT_EQ(found(header(), without), "") << "a map that the annotation does not know";
}

TEST(GeoTiffCheck, SeveralBandsAreWorthALook) {
  gridkit::RasterHeader raster = header();
  raster.bands = 3;
  EXPECT_EQ(found(raster, annotated()), "bands?; ");
}

TEST(GeoTiffCheck, EveryOtherKindOfSampleIsSerious) {
  for (const auto kind : {gridkit::SampleKind::signed_integer, gridkit::SampleKind::floating,
                          gridkit::SampleKind::complex}) {
    gridkit::RasterHeader raster = header();
    raster.kind = kind;
    EXPECT_EQ(found(raster, annotated()), "bit depth; ");
  }
}

TEST(GeoTiffCheck, AFileThatEndsBeforeItsPixelsIsSerious) {
  EXPECT_EQ(found(header(), annotated(), 16099), "file length; ");
}

TEST(GeoTiffCheck, CornersMayBeOuterCorners) {
  AnnotatedImages outer = annotated();
  outer.map->upper_left = {600000, 5000100};
  outer.map->lower_right = {600200, 4999940};
  EXPECT_EQ(found(header(), outer), "");
}

TEST(GeoTiffCheck, CornersHoldToATenthOfAPixel) {
  AnnotatedImages images = annotated();
  images.map->upper_left = {600001.19, 5000098.81};
  EXPECT_EQ(found(header(), images), "");
  images.map->upper_left = {600001.21, 5000099};
  EXPECT_EQ(found(header(), images), "upper left pixel?; ");
  images.map->upper_left = {600002.19, 5000099};  // 0.595 pixels
  EXPECT_EQ(found(header(), images), "upper left pixel?; ");
  images.map->upper_left = {600001, 5000097.79};  // 0.605 pixels
  EXPECT_EQ(found(header(), images), "upper left pixel; ");
}

TEST(GeoTiffCheck, SpacingsHoldToAMillionthWhateverTheirSign) {
  AnnotatedImages images = annotated();
  images.map->spacing = {2, -2};
  EXPECT_EQ(found(header(), images), "");
  images.map->spacing = {2.0000019, 2};
  EXPECT_EQ(found(header(), images), "");
  images.map->spacing = {2.0000021, 2};
  EXPECT_EQ(found(header(), images), "pixel spacing; ");
}

TEST(GeoTiffCheck, AnImageWithSouthUpIsSerious) {
  gridkit::RasterHeader raster = header();
  raster.map->upper_left[1] = 4999940;
  raster.map->pixel_size[1] = 2;
  EXPECT_EQ(found(raster, annotated()), "pixel spacing; upper left pixel; lower right pixel; ");
}

TEST(GeoTiffCheck, PlacesThatAreNoNumbersAreSerious) {
  AnnotatedImages images = annotated();
  images.map->upper_left[0] = std::numeric_limits<double>::quiet_NaN();
  EXPECT_EQ(found(header(), images), "upper left pixel; ");
}

TEST(GeoTiffCheck, TheLastPixelOfAnotherSizeIsNotCompared) {
  gridkit::RasterHeader raster = header();
  raster.width = 99;
  EXPECT_EQ(found(raster, annotated()), "image size; ");
}

}  // namespace
