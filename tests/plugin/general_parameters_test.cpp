#include "plugin/general_parameters.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "gridkit/memory.h"
#include "plugin/product_record.h"
#include "plugin/text_equality.h"
#include "support/fake_document.h"
#include "support/fake_toolkit.h"

namespace {

class GeneralParameters : public testing::Test {
 protected:
  void SetUp() override {
    reset_toolkit();
    record.reset(tsx_CreateRecord());
    record->product = &document;
  }
  void TearDown() override {
    gkm_HeapFree(record->mapProjectionName);
    delete record->sarModel;
    delete record->beta0;
  }
  FakeDocument document;
  std::unique_ptr<TsxFile> record;
};

TEST_F(GeneralParameters, OfAComplexProduct) {
  document.layers = 2;
  tsx_ReadGeneralParms(record.get());
  EXPECT_EQ(record->productVariant, 0);
  EXPECT_EQ(record->imageCount, 2);
  EXPECT_EQ(record->layerCount, 4) << "COSAR gives two layers an image";
  EXPECT_EQ(record->height, 100);
  EXPECT_EQ(record->width, 80);
  EXPECT_EQ(record->beta0->calibration_factor, 1.5);
  EXPECT_EQ(record->mapProjectionName, nullptr);
  EXPECT_EQ(document.map_projection_reads, 0) << "that accessor would end the process";
}

TEST_F(GeneralParameters, OfAnEecProduct) {
  document.variant = "EEC";
  document.format = "GEOTIFF";
  tsx_ReadGeneralParms(record.get());
  EXPECT_EQ(record->productVariant, 3);
  EXPECT_STREQ(record->mapProjectionName, "UTM");
  EXPECT_EQ(record->layerCount, 1);
  EXPECT_EQ(record->sarModel->num_samples, 0);
}

TEST_F(GeneralParameters, OfAnMgdProductHaveNoMapProjection) {
  document.variant = "MGD";
  document.format = "GEOTIFF";
  tsx_ReadGeneralParms(record.get());
  EXPECT_EQ(record->productVariant, 1);
  EXPECT_EQ(record->mapProjectionName, nullptr);
}

TEST_F(GeneralParameters, TheDoublingDependsOnTheFormatAlone) {
  document.format = "GEOTIFF";
  document.layers = 3;
  tsx_ReadGeneralParms(record.get());
  EXPECT_EQ(record->productVariant, 0);
  EXPECT_EQ(record->layerCount, 3);
}

TEST_F(GeneralParameters, ADoubledCountThatNoNumberHoldsIsTheLargest) {
  document.layers = 2147483647;
  tsx_ReadGeneralParms(record.get());
  EXPECT_EQ(record->imageCount, 2147483647);
  EXPECT_EQ(record->layerCount, 2147483647);
}

TEST_F(GeneralParameters, AnotherVariantTextIsUnknown) {
  for (const char* text : {"UNDEFINED", "ssc", ""}) {
    document.variant = text;
    tsx_ReadGeneralParms(record.get());
    EXPECT_EQ(record->productVariant, -1) << text;
    gkm_HeapFree(record->mapProjectionName);
    record->mapProjectionName = nullptr;
  }
}

TEST(TextEquality, HoldsForTheSamePointerAndTheSameCharacters) {
  const std::string one = "SSC";
  const std::string other = "SSC";
  EXPECT_TRUE(tsx_TextEqual(one.c_str(), other.c_str()));
  EXPECT_FALSE(tsx_TextEqual("SSC", "ssc")) << "case counts";
  EXPECT_TRUE(tsx_TextEqual(nullptr, nullptr)) << "null equals itself";
  EXPECT_FALSE(tsx_TextEqual(nullptr, ""));
  EXPECT_FALSE(tsx_TextEqual("", nullptr));
}

TEST(DayOfYear, FollowsTheGregorianRule) {
  EXPECT_EQ(tsx_DayOfYear(2000, 3, 1), 61);
  EXPECT_EQ(tsx_DayOfYear(1900, 3, 1), 60);
  EXPECT_EQ(tsx_DayOfYear(2008, 2, 29), 60);
  EXPECT_EQ(tsx_DayOfYear(2007, 1, 1), 1);
  EXPECT_EQ(tsx_DayOfYear(2007, 12, 31), 365);
  EXPECT_EQ(tsx_DayOfYear(2008, 12, 31), 366);
  EXPECT_EQ(tsx_DayOfYear(2200, 3, 1), 60) << "a century that 400 does not divide";
  // Days before each month of a common year: running sums of 31, 28, 31, 30, 31, 30, 31, 31, ...
  const std::int32_t before[] = {0, 31, 59, 90, 120, 151, 181, 212, 243, 273, 304, 334};
  for (std::int32_t month = 1; month <= 12; ++month) {
    EXPECT_EQ(tsx_DayOfYear(2007, month, 15), before[month - 1] + 15) << month;
    EXPECT_EQ(tsx_DayOfYear(2008, month, 15), before[month - 1] + 15 + (month > 2 ? 1 : 0));
  }
  EXPECT_EQ(tsx_DayOfYear(2008, 0, 5), 5) << "a month of 1 or less adds nothing";
  EXPECT_EQ(tsx_DayOfYear(2007, 14, 1), 366) << "and one past the last adds no more than all";
}

}  // namespace
