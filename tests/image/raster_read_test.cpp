#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "gridkit/instance.h"
#include "record/exports.h"
#include "record/tsx_file.h"
#include "support/fake_toolkit.h"

namespace {

class RasterRead : public testing::Test {
 protected:
  void SetUp() override {
    reset_toolkit();
    file.productVariant = variant_gec;
    file.width = file.height = 10;
    file.blockWidth = 4;
    file.blockHeight = 3;
    file.tiffLayers[0] = gkl_LayerOpen("one", gki_GetInit(nullptr), nullptr, gkl_OptionReadOnly, 0);
    toolkit().pixels = {1.0, 65535.0, 70000.9, -1.0, 0.7};
    toolkit().log.clear();
    pixels.assign(12, 777);
  }
  void TearDown() override { gkl_LayerClose(file.tiffLayers[0], nullptr); }
  int32_t read(int32_t row, int32_t column, int32_t layer_index = 0) {
    TsxLayer layer{&file, layer_index};
    block = pixels.data();
    return tsxLayerRasterRead(&layer, row, column, &block);
  }
  TsxFile file{};
  std::vector<std::uint16_t> pixels;
  void* block = nullptr;
};

TEST_F(RasterRead, NarrowsDetectedPixelsThroughTheStrides) {
  EXPECT_EQ(read(0, 0), 0);
  EXPECT_EQ(pixels[0], 1);
  EXPECT_EQ(pixels[1], 65535);
  EXPECT_EQ(pixels[2], 4464) << "70000 - 65536";
  EXPECT_EQ(pixels[3], 65535) << "-1 in 16 bits";
  EXPECT_EQ(pixels[4], 0);
  EXPECT_EQ(pixels[5], 1) << "the values repeat after five";
  EXPECT_EQ(toolkit().live_blocks, 0);
}

TEST_F(RasterRead, AsksForFullBlocksPastTheEdges) {
  EXPECT_EQ(read(3, 2), 0);
  EXPECT_EQ(toolkit().log,
            (std::vector<std::string>{"gkl_PixelRectCreate 4 3 10", "gkl_LayerRead 8 9 4 3"}))
      << "rectangles of 64-bit floats";
}

TEST_F(RasterRead, WithoutARectangleItFails) {
  toolkit().fail_at["gkl_PixelRectCreate"] = 1;
  EXPECT_EQ(read(0, 0), -1);
  EXPECT_EQ(toolkit().printed[0],
            (PrintedReport{"tsxLayerRasterRead", "gkl_PixelRectCreate failed", gke_SeverityError}));
  EXPECT_EQ(toolkit().live_blocks, 0);
}

TEST_F(RasterRead, AFailingReadLeavesTheBlockAndItsOwnBuffers) {
  toolkit().fail_at["gkl_LayerRead"] = 1;
  EXPECT_EQ(read(0, 0), -1);
  EXPECT_EQ(toolkit().printed[0],
            (PrintedReport{"tsxLayerRasterRead", "gkl_LayerRead failed", gke_SeverityError}));
  EXPECT_EQ(pixels[0], 777);
  EXPECT_EQ(toolkit().live_blocks, 1) << "the staging buffer is lost on this road, as told";
}

TEST_F(RasterRead, ALayerPastTheImagesEndsInAFailedRead) {
  for (const int32_t index : {1, 3, 4, 7, 1000000}) {
    toolkit().printed.clear();
    EXPECT_EQ(read(0, 0, index), -1);
    EXPECT_EQ(toolkit().printed[0].message, "gkl_LayerRead failed") << index;
  }
}

TEST_F(RasterRead, AFailingDeleteOfTheRectangleIsPrintedAndIgnored) {
  toolkit().fail_at["gkl_PixelRectDelete"] = 1;
  EXPECT_EQ(read(0, 0), 0);
  ASSERT_EQ(toolkit().printed.size(), 1U);
  EXPECT_EQ(toolkit().printed[0].word, "gkl_PixelRectDelete");
  EXPECT_EQ(pixels[0], 1);
}

// The preference that each layer's open reads is the size of detected blocks too: block (1, 2) of
// 5 x 5 pixels starts at line 5, column 10.
TEST_F(RasterRead, OfADetectedBlockHasThePreferredSize) {
  toolkit().preferences["import.default_block_size"] = 5;
  file.layerCount = 1;
  std::int32_t out[6];
  TsxLayer* layer = nullptr;
  tsxLayerOpen(&file, "X_HH_MAGNITUDE_1", &out[0], &out[1], &out[2], &out[3], &out[4], &out[5],
               &layer);
  ASSERT_NE(layer, nullptr);
  pixels.assign(26, 777);
  block = pixels.data();
  EXPECT_EQ(tsxLayerRasterRead(layer, 1, 2, &block), 0);
  EXPECT_EQ(toolkit().log,
            (std::vector<std::string>{"gkl_PixelRectCreate 5 5 10", "gkl_LayerRead 10 5 5 5"}));
  EXPECT_NE(pixels[24], 777);
  EXPECT_EQ(pixels[25], 777) << "25 pixels and no more";
  tsxLayerClose(layer);
}

TEST_F(RasterRead, OfABlockWithoutPixelsFailsWithoutReading) {
  for (const std::int32_t size : {0, -1, -64}) {
    toolkit().printed.clear();
    file.blockWidth = file.blockHeight = size;
    EXPECT_EQ(read(0, 0), -1);
    EXPECT_EQ(toolkit().printed[0].message, "gkl_PixelRectCreate failed");
    EXPECT_EQ(pixels[0], 777);
  }
}

TEST_F(RasterRead, WithoutMemoryItFails) {
  toolkit().fail_at["gkm_HeapMalloc"] = 1;
  EXPECT_EQ(read(0, 0), -1);
  EXPECT_EQ(toolkit().messages(), std::vector<std::string>{"No memory for block buffers"});
  EXPECT_EQ(toolkit().calls["gkl_PixelRectDelete"], 1) << "the rectangle is given back";
}

TEST_F(RasterRead, AComplexFailureIsWrapped) {
  file.productVariant = variant_ssc;
  EXPECT_EQ(read(0, 0), -1) << "no image is open";
  ASSERT_EQ(toolkit().printed.size(), 2U);
  EXPECT_EQ(toolkit().printed[0],
            (PrintedReport{"tsxLayerRasterRead", "tsx_ReadLineComplex failed", gke_SeverityError}));
  EXPECT_EQ(toolkit().printed[1],
            (PrintedReport{"tsx_ReadLineComplex", "gkf_fseeko failed", gke_SeverityError}));
  EXPECT_EQ(toolkit().live_reports, 0);
}

// Block (1, 2) of 2 x 2: line 2, column 4, so byte 4 x ((2 + 4) x (10 + 2) + 2 + 4) = 312.
TEST_F(RasterRead, AComplexBlockStartsAtItsRowAndColumn) {
  file.productVariant = variant_ssc;
  file.blockWidth = file.blockHeight = 2;
  toolkit().files["image"] = std::string(4 * 12 * 14, 'x');
  file.cosarFiles[0] = gkf_fopen("image", "r");
  EXPECT_EQ(read(1, 2), 0);
  EXPECT_NE(block, nullptr);
  EXPECT_EQ(toolkit().seeks[0], 312);
  gkf_fclose(file.cosarFiles[0]);
}

TEST_F(RasterRead, AComplexBlockPastTheEndIsNoDataAndSuccess) {
  file.productVariant = variant_ssc;
  file.blockWidth = file.blockHeight = 2;
  toolkit().files["image"] = std::string(4 * 4 * 12 + 100, 'x');
  file.cosarFiles[0] = gkf_fopen("image", "r");
  EXPECT_EQ(read(1, 0), 0);
  EXPECT_EQ(block, nullptr);
  EXPECT_TRUE(toolkit().printed.empty());
  gkf_fclose(file.cosarFiles[0]);
}

}  // namespace
