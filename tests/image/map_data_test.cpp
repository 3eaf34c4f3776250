#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "gridkit/memory.h"
#include "record/exports.h"
#include "record/tsx_file.h"
#include "support/fake_toolkit.h"

namespace {

class MapData : public testing::Test {
 protected:
  void SetUp() override { reset_toolkit(); }
  void TearDown() override {
    gkm_HeapFree(name);
    gkm_HeapFree(units);
    for (MifValue value : mif) gkm_HeapFree(value);
    EXPECT_EQ(toolkit().live_blocks, 0);
  }
  int32_t info(std::int32_t variant) {
    file.productVariant = variant;
    return tsxLayerMapInfoRead(&layer, &name, &x, &y, &width, &height, &units);
  }
  int32_t projection(std::int32_t variant) {
    file.productVariant = variant;
    return tsxLayerMapProjectionRead(&layer, &name, &mif[0], &mif[1], &mif[2], &mif[3], &mif[4],
                                     &mif[5], &mif[6], &mif[7]);
  }
  static int32_t supported(const char* projection, const char* value5 = "5") {
    char texts[][2] = {"2", "3", "4", "6", "7", "8", "9"};
    return tsxInstanceMapProjectionIsSupported(nullptr, projection, texts[0], texts[1], texts[2],
                                               const_cast<char*>(value5), texts[3], texts[4],
                                               texts[5], texts[6]);
  }
  TsxFile file{};
  TsxLayer layer{&file, 0};
  char* name = nullptr;
  char* units = nullptr;
  double x = -1, y = -2, width = -3, height = -4;
  MifValue mif[8] = {};
};

TEST_F(MapData, InfoOfAnSscOrMgdLayerLeavesTheOutsAsTheyWere) {
  for (const std::int32_t variant : {variant_ssc, variant_mgd}) {
    EXPECT_EQ(info(variant), 0);
    EXPECT_EQ(name, nullptr);
    EXPECT_EQ(units, nullptr);
    EXPECT_EQ(x, -1);
    EXPECT_EQ(y, -2);
    EXPECT_EQ(width, -3);
    EXPECT_EQ(height, -4);
  }
  EXPECT_TRUE(toolkit().calls.empty());
}

TEST_F(MapData, InfoOfAGeocodedLayerHasANegativeHeight) {
  EXPECT_EQ(info(variant_eec), 0);
  EXPECT_STREQ(name, "UTM");
  EXPECT_EQ(x, 500000.5);
  EXPECT_EQ(y, 4200000.25);
  EXPECT_EQ(width, 2.5);
  EXPECT_EQ(height, -1.25);
  EXPECT_STREQ(units, "metre");
}

TEST_F(MapData, InfoThatCannotBeReadIsReported) {
  toolkit().fail_at["gkl_MapInfoRead"] = 1;
  EXPECT_EQ(info(variant_gec), -1);
  EXPECT_EQ(toolkit().printed.front(),
            (PrintedReport{"tsxLayerMapInfoRead", "gkl_MapInfoRead failed", gke_SeverityError}));
  EXPECT_EQ(toolkit().live_reports, 0);
}

TEST_F(MapData, InfoWithoutMemoryForItsTextsIsReported) {
  for (const int call : {1, 2}) {
    reset_toolkit();
    name = units = nullptr;
    toolkit().fail_at["gks_Duplicate"] = call;
    EXPECT_EQ(info(variant_gec), -1);
    EXPECT_EQ(toolkit().messages(), std::vector<std::string>{"No memory for the map information"});
  }
}

TEST_F(MapData, InfoWithoutATextIsToldWithoutIt) {
  toolkit().null_map_texts = {"projectionName"};
  EXPECT_EQ(info(variant_gec), 0);
  EXPECT_EQ(name, nullptr);
  EXPECT_STREQ(units, "metre");
  gkm_HeapFree(units);
  toolkit().null_map_texts = {"units"};
  EXPECT_EQ(info(variant_gec), 0);
  EXPECT_STREQ(name, "UTM");
  EXPECT_EQ(units, nullptr);
  EXPECT_TRUE(toolkit().created.empty());
}

TEST_F(MapData, ProjectionOfAnSscOrMgdLayerIsNineZeros) {
  for (const std::int32_t variant : {variant_ssc, variant_mgd}) {
    char prepared[] = "prepared";
    name = prepared;
    for (MifValue& value : mif) value = prepared;
    EXPECT_EQ(projection(variant), 0);
    EXPECT_EQ(name, nullptr);
    for (const MifValue value : mif) EXPECT_EQ(value, nullptr);
  }
  EXPECT_TRUE(toolkit().calls.empty());
}

TEST_F(MapData, ProjectionOfAGeocodedLayerIsItsMifForm) {
  EXPECT_EQ(projection(variant_gec), 0);
  EXPECT_STREQ(name, "UTM of the projection") << "the conversion has the last word";
  for (int i = 0; i < 8; ++i) {
    EXPECT_EQ(static_cast<char*>(mif[i]), std::to_string(i + 2)) << "in their order";
  }
}

TEST_F(MapData, ProjectionThatCannotBeReadLeavesAReportUnprinted) {
  toolkit().fail_at["gkl_LayerMapProjectionRead"] = 1;
  EXPECT_EQ(projection(variant_gec), -1);
  EXPECT_EQ(name, nullptr);
  for (const MifValue value : mif) EXPECT_EQ(value, nullptr);
  EXPECT_TRUE(toolkit().printed.empty());
  EXPECT_EQ(toolkit().created,
            (std::vector<PrintedReport>{
                {"tsxLayerMapProjectionRead", "gkl_LayerMapProjectionRead", gke_SeverityError}}));
  EXPECT_EQ(toolkit().live_reports, 2) << "the toolkit's and the function's, neither deleted";
}

TEST_F(MapData, ProjectionThatCannotBeConvertedKeepsItsName) {
  toolkit().fail_at["gkj_ProjectionConvertToMIF"] = 1;
  EXPECT_EQ(projection(variant_gec), -1);
  EXPECT_STREQ(name, "UTM");
  EXPECT_TRUE(toolkit().printed.empty());
  EXPECT_EQ(toolkit().created,
            (std::vector<PrintedReport>{
                {"tsxLayerMapProjectionRead", "gkj_ProjectionConvertToMIF", gke_SeverityError}}));
}

TEST_F(MapData, ProjectionDoesNotLookAtAFailureOfTheInfo) {
  toolkit().fail_at["gkl_MapInfoRead"] = 1;
  EXPECT_EQ(projection(variant_gec), 0);
  EXPECT_STREQ(name, "UTM of the projection");
  EXPECT_TRUE(toolkit().created.empty());
  EXPECT_TRUE(toolkit().printed.empty());
  EXPECT_EQ(toolkit().map_info_slots, 1);
  EXPECT_EQ(toolkit().live_reports, 1) << "the toolkit's, neither printed nor deleted";
}

TEST_F(MapData, AnImageWithoutAMapIsSupported) {
  EXPECT_EQ(supported(nullptr, nullptr), 1);
  EXPECT_TRUE(toolkit().calls.empty()) << "nothing else happens";
}

TEST_F(MapData, ExactlyTwoProjectionsAreSupported) {
  EXPECT_EQ(supported("UTM"), 1);
  EXPECT_EQ(supported("Polar Stereographic"), 1);
  EXPECT_EQ(supported("utm"), 0);
  EXPECT_EQ(supported("Lambert"), 0);
  EXPECT_EQ(supported("UTM", nullptr), 1);
  EXPECT_TRUE(toolkit().printed.empty());
}

TEST_F(MapData, ANullNameWithAValueGoesThroughTheConversion) {
  EXPECT_EQ(supported(nullptr), 0);
  EXPECT_EQ(toolkit().log, (std::vector<std::string>{"2", "3", "4", "5", "6", "7", "8", "9",
                                                     "Gkj_ProParameters"}));
}

TEST_F(MapData, AProjectionWithAMarkIsNotSupported) {
  for (const std::int32_t mark : {1, -1}) {
    toolkit().projection_mark = mark;
    EXPECT_EQ(supported("UTM"), 0);
    EXPECT_EQ(supported("Lambert"), 0);
  }
  toolkit().projection_mark = 0;
  EXPECT_EQ(supported("Lambert"), 0) << "whatever the mark";
}

TEST_F(MapData, TheNameAloneAnswersWhenTheConversionFails) {
  toolkit().projection_mark = 1;
  toolkit().fail_at["gkj_ProjectionConvertFromMIF"] = 1;
  toolkit().fail_until["gkj_ProjectionConvertFromMIF"] = 2;
  EXPECT_EQ(supported("UTM"), 1);
  EXPECT_EQ(toolkit().printed.front(),
            (PrintedReport{"tsxInstanceMapProjectionIsSupported",
                           "gkj_ProjectionConvertFromMIF failed", gke_SeverityError}));
  EXPECT_EQ(supported("Lambert"), 0);
}

}  // namespace
