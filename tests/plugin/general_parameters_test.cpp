#include "plugin/general_parameters.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "gridkit/memory.h"
#include "plugin/product_record.h"
#include "record/text_equality.h"
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

TEST_F(GeneralParameters, ADoubledCountThatNoNumberHoldsIsTheNearest) {
  document.layers = 2147483647;
  tsx_ReadGeneralParms(record.get());
  EXPECT_EQ(record->imageCount, 2147483647);
  EXPECT_EQ(record->layerCount, 2147483647);
  document.layers = -2147483647 - 1;
  tsx_ReadGeneralParms(record.get());
  EXPECT_EQ(record->layerCount, -2147483647 - 1) << "and the least of negative ones";
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

}  // namespace
