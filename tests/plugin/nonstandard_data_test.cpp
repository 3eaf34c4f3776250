#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "gridkit/memory.h"
#include "record/exports.h"
#include "record/tsx_file.h"
#include "support/fake_toolkit.h"

namespace {

class NonStandardData : public testing::Test {
 protected:
  void SetUp() override {
    reset_toolkit();
    file.sarModel = &model;
    file.beta0 = &beta0;
  }
  void TearDown() override { release(); }
  void release() {
    for (void* block : std::vector<void*>{data, dictionary, type}) gkm_HeapFree(block);
    data = nullptr;
    dictionary = type = nullptr;
    size = -7;
  }
  int32_t read(const char* name) {
    release();
    return tsxFileDataRead(&file, name, &data, &size, &dictionary, &type);
  }
  std::vector<std::string> names(std::int32_t variant) {
    file.productVariant = variant;
    int32_t count = 0;
    char** list = nullptr;
    EXPECT_EQ(tsxFileRasterFormatsNonStandardDataNamesGet(&file, &count, &list), 0);
    std::vector<std::string> result;
    for (int32_t i = 0; i < count; ++i) {
      result.emplace_back(list[i]);
      gkm_HeapFree(list[i]);
    }
    gkm_HeapFree(list);
    return result;
  }
  TsxFile file{};
  RadarGenericModel model{};
  TsxBeta0 beta0{};
  void* data = nullptr;
  int32_t size = -7;
  char* dictionary = nullptr;
  char* type = nullptr;
};

TEST_F(NonStandardData, OfRadarGeometryIsTheModelAndTheCalibration) {
  const std::vector<std::string> both = {":RADAR_Generic_v2.2", ":TSX_Beta0"};
  EXPECT_EQ(names(variant_ssc), both);
  EXPECT_EQ(names(variant_mgd), both);
}

TEST_F(NonStandardData, OfAGeocodedProductIsTheCalibrationAlone) {
  const std::vector<std::string> one = {":TSX_Beta0"};
  EXPECT_EQ(names(variant_gec), one);
  EXPECT_EQ(names(variant_eec), one);
}

TEST_F(NonStandardData, OfAnUnknownVariantIsAFailureThatSetsNothing) {
  file.productVariant = variant_unknown;
  int32_t count = -7;
  char** list = nullptr;
  EXPECT_EQ(tsxFileRasterFormatsNonStandardDataNamesGet(&file, &count, &list), -1);
  EXPECT_EQ(count, -7);
  EXPECT_EQ(list, nullptr);
}

TEST_F(NonStandardData, ListLosesNothingWhenANameCannotBeMade) {
  for (const int call : {1, 2}) {
    reset_toolkit();
    toolkit().fail_at["gks_Sprintf"] = call;
    file.productVariant = variant_ssc;
    int32_t count = -7;
    char** list = nullptr;
    EXPECT_EQ(tsxFileRasterFormatsNonStandardDataNamesGet(&file, &count, &list), -1);
    EXPECT_EQ(toolkit().printed.front(),
              (PrintedReport{"tsxFileRasterFormatsNonStandardDataNamesGet", "gks_Sprintf failed.",
                             gke_SeverityError}));
    EXPECT_EQ(toolkit().live_blocks, 0);
    EXPECT_EQ(list, nullptr);
  }
  toolkit().fail_at.clear();
  toolkit().fail_at["gkm_HeapMalloc"] = toolkit().calls["gkm_HeapMalloc"] + 1;
  int32_t count = 0;
  char** list = nullptr;
  EXPECT_EQ(tsxFileRasterFormatsNonStandardDataNamesGet(&file, &count, &list), -1);
}

TEST_F(NonStandardData, IsEncodedWithItsDictionary) {
  model.sensor = 0x01020304;
  EXPECT_EQ(read(":RADAR_Generic_v2.2"), 0);
  EXPECT_STREQ(type, "RADAR_Generic_v2.2");
  EXPECT_STREQ(dictionary, "dictionary of RADAR_Generic_v2.2");
  ASSERT_EQ(size, 4);
  EXPECT_EQ(*static_cast<std::int32_t*>(data), 0x01020304);
  EXPECT_EQ(toolkit().log,
            (std::vector<std::string>{"design RADAR_Generic_v2.2", "destroy RADAR_Generic_v2.2"}));
  EXPECT_EQ(read(":TSX_Beta0"), 0);
  EXPECT_STREQ(type, "TSX_Beta0");
  EXPECT_EQ(toolkit().log.back(), "design TSX_Beta0") << "left to the toolkit";
}

TEST_F(NonStandardData, IsFoundInAnyCaseAndByTheBeginningOfTheName) {
  EXPECT_EQ(read(":radar_generic_v2.2"), 0);
  EXPECT_STREQ(type, "RADAR_Generic_v2.2");
  EXPECT_EQ(read(":TSX_Beta0xyz"), 0);
  EXPECT_STREQ(type, "TSX_Beta0");
}

TEST_F(NonStandardData, OfAnUnknownNameIsNothingAndNoFailure) {
  for (const char* name : {"TSX_Beta0", "", ":", ":RADAR_Generic_v2.1", ":TSX_Beta"}) {
    EXPECT_EQ(read(name), 0) << name;
    EXPECT_EQ(data, nullptr);
    EXPECT_EQ(size, -7);
    EXPECT_EQ(dictionary, nullptr);
    EXPECT_EQ(type, nullptr);
  }
  EXPECT_EQ(read(nullptr), 0);
  EXPECT_TRUE(toolkit().printed.empty());
}

TEST_F(NonStandardData, NeedsADictionary) {
  toolkit().fail_at["gkd_DictionaryCreate"] = 1;
  EXPECT_EQ(read(":TSX_Beta0"), -1);
  EXPECT_EQ(toolkit().printed.front(),
            (PrintedReport{"tsxFileDataRead", "dictionary create failed", gke_SeverityError}));
}

TEST_F(NonStandardData, TellsAFailedEncoding) {
  for (const char* name : {":RADAR_Generic_v2.2", ":TSX_Beta0"}) {
    release();
    reset_toolkit();
    toolkit().fail_at["gkd_ObjectSize"] = 1;
    EXPECT_EQ(read(name), -1);
    EXPECT_EQ(toolkit().messages(),
              (std::vector<std::string>{"Creating MIF Node failed.", "gkd_ObjectSize failed",
                                        "made to fail"}));
    EXPECT_NE(dictionary, nullptr) << "what was made before stays";
    EXPECT_EQ(toolkit().live_reports, 0);
  }
}

TEST_F(NonStandardData, DropsTheReportOfADesignAndTellsWhatTheEncodingSays) {
  toolkit().fail_at["gkd_DesignCreate"] = 1;
  EXPECT_EQ(read(":RADAR_Generic_v2.2"), -1);
  EXPECT_EQ(toolkit().messages(), (std::vector<std::string>{"Creating MIF Node failed.",
                                                            "dictionary add failed", "no design"}));
  EXPECT_EQ(toolkit().live_reports, 0);
}

}  // namespace
