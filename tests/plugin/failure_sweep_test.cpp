#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "gridkit/memory.h"
#include "handlepool/handlepool.h"
#include "record/exports.h"
#include "record/tsx_file.h"
#include "support/fake_document.h"
#include "support/fake_toolkit.h"

namespace {

const std::string annotation = "1\n2\nLevel 1B Product\nTSX-1\n5\n6\n3.4\n";

constexpr int size = 40;  // lines and samples of each image

struct Life {
  bool opened = false;  // a registered record
  bool listed = false;
  bool layer = false;
  bool pixels = false;
};

// A record stays reachable when its open or its release fails, as it does for a real host.
std::vector<TsxFile*>& kept_records() {
  static auto& records = *new std::vector<TsxFile*>;
  return records;
}

// A product's whole life: open, list, open a layer, read a block, close both.
Life live(const char* variant) {
  Life life;
  auto* document = new FakeDocument;
  document->variant = variant;
  document->format = std::string(variant) == "SSC" ? "COSAR" : "GEOTIFF";
  document->rows = document->columns = size;
  toolkit().document = document;
  toolkit().files["a.xml"] = annotation;
  toolkit().files["IMAGEDATA/image0"] = std::string(4 * (size + 2) * (size + 4), 'x');
  toolkit().pixels = {1.0};
  toolkit().preferences["import.default_block_size"] = 8;

  TsxFile* file = tsxFileTitleIdentifyAndOpen("a.xml", nullptr, "r");
  delete toolkit().document;  // when the open did not get to it
  toolkit().document = nullptr;
  if (file == nullptr) return life;
  kept_records().push_back(file);
  life.opened = pool_FindFileHandleIfOpen("a.xml", 0) == file;
  if (!life.opened) return life;

  int32_t count = 0;
  char** names = nullptr;
  life.listed = tsxFileLayerNamesGet(file, &count, &names) == 0;
  for (int32_t i = 0; life.listed && i < count; ++i) gkm_HeapFree(names[i]);
  if (life.listed) gkm_HeapFree(names);

  int32_t out[6];
  TsxLayer* layer = nullptr;
  tsxLayerOpen(file, "X_HH_MAGNITUDE_1", &out[0], &out[1], &out[2], &out[3], &out[4], &out[5],
               &layer);
  life.layer = layer != nullptr;
  if (life.layer) {
    std::vector<std::uint16_t> block(64);
    void* pixels = block.data();
    life.pixels = tsxLayerRasterRead(layer, 1, 1, &pixels) == 0 && pixels != nullptr;
    tsxLayerClose(layer);
  }
  tsxFileClose(file);
  return life;
}

class FailureSweep : public testing::TestWithParam<const char*> {};

TEST_P(FailureSweep, ALifeWithoutFailureIsWhole) {
  reset_toolkit();
  const Life life = live(GetParam());
  EXPECT_TRUE(life.opened && life.listed && life.layer && life.pixels);
  EXPECT_TRUE(toolkit().printed.empty());
}

// Whichever call of whichever operation fails, nothing crashes, and a life that is not whole was
// told of: every failure is printed, or left behind by the release, which prints nothing.
TEST_P(FailureSweep, EveryFailureIsToldAndNoneIsFatal) {
  const std::vector<const char*> operations = {"gkm_HeapMalloc",
                                               "gks_Duplicate",
                                               "gks_Sprintf",
                                               "gkf_Open",
                                               "gkf_Close",
                                               "gkf_Fgets",
                                               "gkf_fopen",
                                               "gkf_fclose",
                                               "gkf_fseeko",
                                               "gkl_LayerOpen",
                                               "gks_StringListAppend",
                                               "gks_StringListDelete",
                                               "gkl_LayerGetNames",
                                               "gkl_LayerClose",
                                               "gkl_LayerRead",
                                               "gkl_PixelRectCreate",
                                               "gkl_PixelRectDelete",
                                               "gkp_GetNumberPreference"};
  int injected = 0;
  for (const char* operation : operations) {
    for (int call = 1;; ++call) {
      reset_toolkit();
      toolkit().fail_at[operation] = call;
      const Life life = live(GetParam());
      if (toolkit().calls[operation] < call) break;
      ++injected;
      const bool recognised = toolkit().calls["gkf_Open"] > 1;
      const bool whole = life.opened && life.listed && life.layer && life.pixels;
      if (recognised && !whole) {
        EXPECT_FALSE(toolkit().created.empty()) << operation << ' ' << call;
        EXPECT_FALSE(toolkit().printed.empty()) << operation << ' ' << call;
      }
      const bool in_release = toolkit().live_reports > 0;
      if (in_release) {
        EXPECT_EQ(toolkit().created.back().word, "fileFree") << operation << ' ' << call;
        EXPECT_TRUE(whole) << operation << ' ' << call;
      }
    }
  }
  EXPECT_GT(injected, 30) << "the sweep must reach its operations";
}

INSTANTIATE_TEST_SUITE_P(Variants, FailureSweep, testing::Values("SSC", "MGD", "EEC"));

}  // namespace
