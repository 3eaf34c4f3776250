#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "gridkit/memory.h"
#include "gridkit/string_list.h"
#include "image/layer_names.h"
#include "record/exports.h"
#include "record/run_counters.h"
#include "support/fake_document.h"
#include "support/fake_toolkit.h"

namespace {

class Layers : public testing::Test {
 protected:
  void SetUp() override {
    reset_toolkit();
    file.product = &document;
    file.productVariant = variant_ssc;
    file.imageCount = 2;
    file.layerCount = 4;
    file.width = 80;
    file.height = 100;
  }
  void TearDown() override { gks_StringListDelete(file.layerNames, nullptr); }

  std::vector<std::string> names(int32_t expected = 0) {
    int32_t count = -1;
    char** list = nullptr;
    EXPECT_EQ(tsxFileLayerNamesGet(&file, &count, &list), expected);
    std::vector<std::string> result;
    for (int32_t i = 0; i < count; ++i) {
      result.emplace_back(list[i]);
      gkm_HeapFree(list[i]);
    }
    if (count > 0) gkm_HeapFree(list);
    return result;
  }
  struct Opened {
    int32_t pixelType = -1, width = -1, height = -1, layerType = -1, blockWidth = -1,
            blockHeight = -1;
    TsxLayer* layer = reinterpret_cast<TsxLayer*>(8);
  };
  Opened open(const char* name) {
    Opened o;
    EXPECT_EQ(tsxLayerOpen(&file, name, &o.pixelType, &o.width, &o.height, &o.layerType,
                           &o.blockWidth, &o.blockHeight, &o.layer),
              0);
    return o;
  }

  FakeDocument document;
  TsxFile file{};
};

TEST_F(Layers, OfAComplexProductAlternate) {
  EXPECT_EQ(names(), (std::vector<std::string>{"X_HH_MAGNITUDE_1", "X_HH_PHASE_2",
                                               "X_VV_MAGNITUDE_3", "X_VV_PHASE_4"}));
}

TEST_F(Layers, OfADetectedProductAreMagnitudes) {
  file.productVariant = variant_gec;
  file.layerCount = 2;
  EXPECT_EQ(names(), (std::vector<std::string>{"X_HH_MAGNITUDE_1", "X_VV_MAGNITUDE_2"}));
}

TEST_F(Layers, OnlyAVIsToldApart) {
  file.productVariant = variant_mgd;
  file.layerCount = 5;
  document.polarisations = {"HV", "VH", "RH", "", "V"};
  EXPECT_EQ(names(),
            (std::vector<std::string>{"X_HV_MAGNITUDE_1", "X_VH_MAGNITUDE_2", "X_HH_MAGNITUDE_3",
                                      "X_HH_MAGNITUDE_4", "X_VH_MAGNITUDE_5"}));
}

TEST_F(Layers, OfAProductWithoutImagesAreNone) {
  file.layerCount = 0;
  int32_t count = 7;
  char** list = reinterpret_cast<char**>(&count);
  EXPECT_EQ(tsxFileLayerNamesGet(&file, &count, &list), 0);
  EXPECT_EQ(count, 0);
  EXPECT_EQ(list, nullptr);
}

TEST_F(Layers, ListingTwiceGrowsTheRecordsOwnList) {
  const auto first = names();
  EXPECT_EQ(names(), first);
  ASSERT_EQ(file.layerNames->count, 8);
  EXPECT_STREQ(file.layerNames->strings[4], "X_HH_MAGNITUDE_1");
}

TEST_F(Layers, WithoutADocumentThereIsNoName) {
  file.product = nullptr;
  gke_Report* report = nullptr;
  EXPECT_EQ(tsx_FileLayerNamesGet(&file, 0, &report), nullptr);
  EXPECT_EQ(report, nullptr);
}

TEST_F(Layers, WithoutAPolarisationThereIsNoName) {
  struct Silent : FakeDocument {
    const char* polLayer(std::uint32_t) override { return nullptr; }
  } silent;
  file.product = &silent;
  EXPECT_EQ(tsx_FileLayerNamesGet(&file, 0, nullptr), nullptr);
  EXPECT_EQ(toolkit().calls["gks_Sprintf"], 0);
}

TEST_F(Layers, TheNameBuilderClearsTheCallersReport) {
  gke_Report* stale = gke_CreateErrorReport("before", 0, gke_SeverityError, nullptr, "stale", 0);
  gke_Report* slot = stale;
  gkm_HeapFree(tsx_FileLayerNamesGet(&file, 0, &slot));
  EXPECT_EQ(slot, nullptr);
  gke_DeleteErrorReportEx(&stale);
}

TEST_F(Layers, AFailingNameHasItsWords) {
  toolkit().fail_at["gks_Sprintf"] = 2;
  EXPECT_TRUE(names(-1).empty());
  EXPECT_EQ(
      toolkit().printed[0],
      (PrintedReport{"tsxFileLayerNamesGet", "tsx_FileLayerNamesGet failed", gke_SeverityError}));
  EXPECT_EQ(toolkit().live_reports, 0);
}

// Each name goes to the record's own list first, then to the host's. Of the appends of four names
// the first to third fail in turn: what the record's list holds then stays, all else is freed.
TEST_F(Layers, AFailingAppendHasItsWords) {
  for (const int call : {1, 2, 3}) {
    toolkit().printed.clear();
    gks_StringListDelete(file.layerNames, nullptr);
    file.layerNames = nullptr;
    toolkit().fail_at["gks_StringListAppend"] = toolkit().calls["gks_StringListAppend"] + call;
    EXPECT_TRUE(names(-1).empty());
    EXPECT_EQ(
        toolkit().printed[0],
        (PrintedReport{"tsxFileLayerNamesGet", "gks_StringListAppend failed", gke_SeverityError}));
    const int kept = file.layerNames == nullptr ? 0 : file.layerNames->count;
    EXPECT_EQ(kept, call / 2) << call;
    EXPECT_EQ(toolkit().live_blocks, kept == 0 ? 0 : kept + 1) << "texts and their array";
  }
}

TEST_F(Layers, AFailingDeleteIsAWarningAndChangesNothing) {
  toolkit().fail_at["gks_StringListDelete"] = 1;
  EXPECT_EQ(names().size(), 4U);
  EXPECT_EQ(
      toolkit().printed[0],
      (PrintedReport{"tsxFileLayerNamesGet", "gks_StringListDelete failed", gke_SeverityWarning}));
}

TEST_F(Layers, AFailingDeleteAfterAFailingAppendIsPrintedToo) {
  toolkit().fail_at["gks_StringListAppend"] = 4;
  toolkit().fail_at["gks_StringListDelete"] = 1;
  EXPECT_TRUE(names(-1).empty());
  EXPECT_EQ(toolkit().printed,
            (std::vector<PrintedReport>{
                {"tsxFileLayerNamesGet", "gks_StringListDelete failed", gke_SeverityWarning},
                {"gks_StringListDelete", "made to fail", gke_SeverityError},
                {"tsxFileLayerNamesGet", "gks_StringListAppend failed", gke_SeverityError},
                {"gks_StringListAppend", "made to fail", gke_SeverityError}}));
  EXPECT_EQ(toolkit().live_reports, 0);
}

TEST_F(Layers, NamesAreCheckedForTheirForm) {
  EXPECT_EQ(tsx_LayerCheck(&file, "X_HH_MAGNITUDE_1"), 0);
  EXPECT_EQ(tsx_LayerCheck(&file, "Q_AB_ANYTHING_3"), 2) << "letters are not compared";
  EXPECT_EQ(tsx_LayerCheck(&file, "X_HH__1"), 0) << "the kind may be empty";
  for (const char* name : {"X_HH_MAGNITUDE_0", "X_HH_MAGNITUDE_01", "x_HH_MAGNITUDE_1",
                           "X_hh_MAGNITUDE_1", "X_HH_magnitude_1", "X_HH_MAGNITUDE_",
                           "X_HH_MAGNITUDE_1 ", " X_HH_MAGNITUDE_1", "X_HHH_MAGNITUDE_1", ""}) {
    EXPECT_EQ(tsx_LayerCheck(&file, name), -1) << name;
  }
  EXPECT_EQ(tsx_LayerCheck(&file, nullptr), -1);
}

TEST_F(Layers, NumbersGoUpToTwiceTheLayerCount) {
  file.layerCount = 2;
  EXPECT_EQ(tsx_LayerCheck(&file, "X_HH_PHASE_4"), 3);
  EXPECT_EQ(tsx_LayerCheck(&file, "X_HH_PHASE_5"), -1);
  file.layerCount = 2147483647;
  EXPECT_EQ(tsx_LayerCheck(&file, "X_HH_PHASE_2147483647"), 2147483646);
}

TEST_F(Layers, OpeningTellsTypeSizeAndBlocks) {
  const Opened magnitude = open("X_HH_MAGNITUDE_1");
  ASSERT_NE(magnitude.layer, nullptr);
  EXPECT_EQ(magnitude.pixelType, 0);
  EXPECT_EQ(magnitude.width, 80);
  EXPECT_EQ(magnitude.height, 100);
  EXPECT_EQ(magnitude.layerType, 0);
  EXPECT_EQ(magnitude.blockWidth, 64);
  EXPECT_EQ(magnitude.blockHeight, 64);
  EXPECT_EQ(magnitude.layer->file, &file);
  EXPECT_EQ(magnitude.layer->layerIndex, 0);
  const Opened phase = open("X_HH_PHASE_2");
  EXPECT_EQ(phase.pixelType, 1);
  file.productVariant = variant_gec;
  const Opened detected = open("X_HH_MAGNITUDE_2");
  EXPECT_EQ(detected.pixelType, 0) << "an odd index is no phase there";
  for (TsxLayer* layer : {magnitude.layer, phase.layer, detected.layer}) tsxLayerClose(layer);
}

TEST_F(Layers, ABlockSizePreferenceIsTruncated) {
  toolkit().preferences["import.default_block_size"] = 100.9;
  const Opened o = open("X_HH_MAGNITUDE_1");
  EXPECT_EQ(o.blockWidth, 100);
  EXPECT_EQ(o.blockHeight, 100);
  EXPECT_EQ(file.blockWidth, 100);
  EXPECT_EQ(file.blockHeight, 100);
  EXPECT_EQ(toolkit().calls["gkp_GetNumberPreference"], 2) << "once for each direction";
  tsxLayerClose(o.layer);
}

TEST_F(Layers, EachOpenSetsTheBlocksOfTheWholeProduct) {
  const Opened first = open("X_HH_MAGNITUDE_1");
  toolkit().preferences["import.default_block_size"] = 16;
  const Opened second = open("X_HH_MAGNITUDE_1");
  EXPECT_NE(first.layer, second.layer) << "two handles on one layer";
  EXPECT_EQ(file.blockWidth, 16);
  EXPECT_EQ(file.blockHeight, 16);
  tsxLayerClose(first.layer);
  tsxLayerClose(second.layer);
  EXPECT_EQ(toolkit().freed, (std::vector<const void*>{first.layer, second.layer}));
}

TEST_F(Layers, ABlockSizeThatNoNumberHoldsIsNone) {
  const struct {
    double preference;
    int32_t size;
  } cases[] = {{-100.9, -100},    {2147483647.5, 2147483647},
               {2147483648.0, 0}, {-2147483648.0, -2147483647 - 1},
               {-3e9, 0},         {std::nan(""), 0}};
  for (const auto& set : cases) {
    toolkit().preferences["import.default_block_size"] = set.preference;
    const Opened o = open("X_HH_MAGNITUDE_1");
    EXPECT_EQ(o.blockWidth, set.size) << set.preference;
    EXPECT_EQ(o.blockHeight, set.size) << set.preference;
    tsxLayerClose(o.layer);
  }
}

TEST_F(Layers, AFailingPreferenceIsPrintedAndTheHandleDelivered) {
  toolkit().fail_at["gkp_GetNumberPreference"] = 1;
  const Opened o = open("X_HH_MAGNITUDE_1");
  EXPECT_NE(o.layer, nullptr);
  ASSERT_EQ(toolkit().printed.size(), 1U);
  EXPECT_EQ(toolkit().printed[0].word, "gkp_GetNumberPreference");
  tsxLayerClose(o.layer);
}

TEST_F(Layers, ARefusedNameHasItsWordsAndNoHandle) {
  const int32_t before = s_tsxLayerOpenCount;
  EXPECT_EQ(open("nonsense").layer, nullptr);
  EXPECT_EQ(
      toolkit().printed,
      (std::vector<PrintedReport>{{"tsxLayerOpen", "tsx_LayerCheck failed", gke_SeverityError}}));
  EXPECT_EQ(s_tsxLayerOpenCount, before);
}

TEST_F(Layers, WithoutMemoryThereIsNoHandle) {
  toolkit().fail_at["gkm_HeapMalloc"] = 1;
  EXPECT_EQ(open("X_HH_MAGNITUDE_1").layer, nullptr);
  EXPECT_EQ(
      toolkit().printed,
      (std::vector<PrintedReport>{{"tsxLayerOpen", "No memory in layeropen", gke_SeverityError}}));
}

TEST_F(Layers, OfAProductOfNegativeHeightTellIt) {
  file.height = -5;
  const Opened o = open("X_HH_MAGNITUDE_1");
  ASSERT_NE(o.layer, nullptr);
  EXPECT_EQ(o.height, -5);
  tsxLayerClose(o.layer);
}

TEST_F(Layers, CountersPrintTheirTexts) {
  const int32_t opened = s_tsxLayerOpenCount;
  const int32_t closed = s_tsxLayerCloseCount;
  const Opened o = open("X_HH_MAGNITUDE_1");
  EXPECT_EQ(tsxLayerClose(o.layer), 0);
  EXPECT_EQ(
      toolkit().debug,
      (std::vector<std::string>{"\n s_tsxLayerOpenCount: " + std::to_string(opened + 1) + " \n",
                                "\n s_tsxLayerCloseCount: " + std::to_string(closed + 1) + " \n"}));
  EXPECT_EQ(toolkit().formats, (std::vector<std::string>{"\n s_tsxLayerOpenCount: %d \n",
                                                         "\n s_tsxLayerCloseCount: %d \n"}));
}

}  // namespace
