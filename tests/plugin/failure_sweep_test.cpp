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
  bool data = false;
  bool map = false;
  bool whole() const { return opened && listed && layer && pixels && data && map; }
};

// Reads everything that lies beside the pixels, and gives it back.
void read_data(TsxFile* file, Life& life) {
  int32_t count = 0;
  char** names = nullptr;
  life.data = tsxFileRasterFormatsNonStandardDataNamesGet(file, &count, &names) == 0;
  for (int32_t i = 0; life.data && i < count; ++i) {
    void* bytes = nullptr;
    int32_t bytes_long = 0;
    char* dictionary = nullptr;
    char* type = nullptr;
    life.data = tsxFileDataRead(file, names[i], &bytes, &bytes_long, &dictionary, &type) == 0;
    for (void* block : std::vector<void*>{bytes, dictionary, type}) gkm_HeapFree(block);
  }
  for (int32_t i = 0; names != nullptr && i < count; ++i) gkm_HeapFree(names[i]);
  gkm_HeapFree(names);
}

void read_map(TsxLayer* layer, Life& life) {
  char* name = nullptr;
  char* units = nullptr;
  double place[4];
  life.map =
      tsxLayerMapInfoRead(layer, &name, &place[0], &place[1], &place[2], &place[3], &units) == 0;
  gkm_HeapFree(name);
  gkm_HeapFree(units);
  MifValue mif[8];
  tsxLayerMapProjectionRead(layer, &name, &mif[0], &mif[1], &mif[2], &mif[3], &mif[4], &mif[5],
                            &mif[6], &mif[7]);
  gkm_HeapFree(name);
  for (MifValue value : mif) gkm_HeapFree(value);
}

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

  read_data(file, life);
  int32_t out[6];
  TsxLayer* layer = nullptr;
  tsxLayerOpen(file, "X_HH_MAGNITUDE_1", &out[0], &out[1], &out[2], &out[3], &out[4], &out[5],
               &layer);
  life.layer = layer != nullptr;
  if (life.layer) {
    std::vector<std::uint16_t> block(64);
    void* pixels = block.data();
    life.pixels = tsxLayerRasterRead(layer, 1, 1, &pixels) == 0 && pixels != nullptr;
    read_map(layer, life);
    tsxLayerClose(layer);
  }
  tsxFileClose(file);
  return life;
}

class FailureSweep : public testing::TestWithParam<const char*> {};

TEST_P(FailureSweep, ALifeWithoutFailureIsWhole) {
  reset_toolkit();
  const Life life = live(GetParam());
  EXPECT_TRUE(life.whole());
  EXPECT_TRUE(toolkit().printed.empty());
}

// Whichever call of whichever operation fails, nothing crashes, and a life that is not whole was
// told of: every failure is printed, or left behind by the two functions that print nothing.
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
                                               "gkp_GetNumberPreference",
                                               "gkd_DictionaryCreate",
                                               "gkd_DesignCreate",
                                               "gkd_DictionaryAddDesign",
                                               "gkd_DictionaryEncodeToString",
                                               "gkd_ObjectSize",
                                               "gkd_ConvertToMIF",
                                               "gkl_MapInfoRead",
                                               "gkl_LayerMapProjectionRead",
                                               "gkj_ProjectionConvertToMIF",
                                               "rmdl_modelEphemeris"};
  int injected = 0;
  for (const char* operation : operations) {
    for (int call = 1;; ++call) {
      reset_toolkit();
      toolkit().fail_at[operation] = call;
      const Life life = live(GetParam());
      if (toolkit().calls[operation] < call) break;
      ++injected;
      const bool recognised = toolkit().calls["gkf_Open"] > 1;
      if (recognised && !life.whole()) {
        EXPECT_FALSE(toolkit().created.empty()) << operation << ' ' << call;
        EXPECT_FALSE(toolkit().printed.empty()) << operation << ' ' << call;
      }
      // Two functions leave their reports behind without a word.
      if (toolkit().live_reports > 0) {
        const std::string& word = toolkit().created.back().word;
        EXPECT_TRUE(word == "fileFree" || word == "tsxLayerMapProjectionRead")
            << operation << ' ' << call << ": " << word;
        EXPECT_TRUE(life.whole()) << operation << ' ' << call;
      }
    }
  }
  EXPECT_GT(injected, 30) << "the sweep must reach its operations";
}

INSTANTIATE_TEST_SUITE_P(Variants, FailureSweep, testing::Values("SSC", "MGD", "EEC"));

}  // namespace
