#include "plugin/product_record.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <new>
#include <string>
#include <vector>

#include "gridkit/instance.h"
#include "gridkit/memory.h"
#include "record/exports.h"
#include "support/fake_document.h"
#include "support/fake_toolkit.h"

namespace {

int allocations_until_failure = 0;  // of the plain allocator; 0 for never

}  // namespace

// The plain allocator in the form that the record uses, so that it can run out of memory.
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  if (allocations_until_failure > 0 && --allocations_until_failure == 0) return nullptr;
  try {
    return ::operator new(size);
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

namespace {

// A document whose end stands in the log among the other releases.
struct LoggedDocument : FakeDocument {
  ~LoggedDocument() override { toolkit().log.emplace_back("document"); }
};

const std::string annotation = "1\n2\nLevel 1B Product\nTSX-1\n5\n6\n3.4\n";

class ProductRecord : public testing::Test {
 protected:
  void SetUp() override { reset_toolkit(); }
  void TearDown() override { allocations_until_failure = 0; }

  // A record that holds one of everything: two images, both name lists, document, annotation and
  // the model's arrays.
  static TsxFile* full_record(std::int32_t variant) {
    toolkit().files["f"] = "x";
    TsxFile* record = tsx_CreateRecord();
    record->productVariant = variant;
    record->imageCount = 2;
    for (int image = 0; image < 2; ++image) {
      if (variant == variant_ssc) {
        record->cosarFiles[image] = gkf_fopen("f", "r");
      } else {
        record->tiffLayers[image] =
            gkl_LayerOpen("f", gki_GetInit(nullptr), nullptr, gkl_OptionReadOnly, 0);
      }
    }
    record->layerNames = gks_StringListAppend(nullptr, "name", nullptr);
    record->auxLayerNames = gks_StringListAppend(nullptr, "other", nullptr);
    record->product = new LoggedDocument;
    record->xmlFile = gkf_Open("f", "r", nullptr, 0);
    for (RadarArray* array : arrays(record)) {
      *array = {2, static_cast<double*>(gkm_HeapMalloc(2 * sizeof(double)))};
    }
    toolkit().log.clear();
    return record;
  }
  static std::array<RadarArray*, 6> arrays(TsxFile* record) {
    RadarGenericModel& m = *record->sarModel;
    return {&m.rsx, &m.rsy, &m.rsz, &m.vsx, &m.vsy, &m.vsz};
  }
};

TEST_F(ProductRecord, IsClearedAtConstruction) {
  TsxFile* record = tsx_CreateRecord();
  EXPECT_EQ(record->productVariant, -1);
  EXPECT_EQ(record->fileName, nullptr);
  EXPECT_EQ(record->xmlFile, nullptr);
  EXPECT_EQ(record->layerNames, nullptr);
  EXPECT_EQ(record->auxLayerNames, nullptr);
  EXPECT_EQ(record->product, nullptr);
  EXPECT_EQ(record->mapProjectionName, nullptr);
  for (int image = 0; image < most_images; ++image) {
    EXPECT_EQ(record->cosarFiles[image], nullptr);
    EXPECT_EQ(record->tiffLayers[image], nullptr);
  }
  for (const std::int32_t number : {record->layerCount, record->imageCount, record->width,
                                    record->height, record->blockWidth, record->blockHeight}) {
    EXPECT_EQ(number, 0);
  }
  EXPECT_EQ(record->sarModel->num_samples, 0);
  EXPECT_EQ(record->sarModel->near_slant_range, 0.0);
  for (const RadarArray* array : arrays(record)) EXPECT_EQ(array->elements, nullptr);
  EXPECT_EQ(record->beta0->calibration_factor, 0.0);
  EXPECT_EQ(tsx_ReleaseRecord(record), 0);
}

TEST_F(ProductRecord, WithoutMemoryForAnyOfItsPartsThereIsNone) {
  for (int part = 1; part <= 3; ++part) {
    allocations_until_failure = part;
    EXPECT_EQ(tsx_CreateRecord(), nullptr) << part;
  }
}

TEST_F(ProductRecord, WithoutMemoryTheOpenHasItsWordsAndNoRecord) {
  toolkit().files["a.xml"] = annotation;
  allocations_until_failure = 1;
  int32_t title = 7;
  EXPECT_EQ(tsxFileTitleIdentifyAndOpen("a.xml", &title, "r"), nullptr);
  EXPECT_EQ(title, 0);
  EXPECT_EQ(toolkit().printed,
            (std::vector<PrintedReport>{{"tsxFileTitleIdentifyAndOpen",
                                         "No memory for TsxFile structure", gke_SeverityError}}));
}

TEST_F(ProductRecord, AComplexProductIsReleasedInAFixedOrder) {
  fileFree(full_record(variant_ssc));
  EXPECT_EQ(toolkit().log,
            (std::vector<std::string>{"gkf_fclose", "gkf_fclose", "gks_StringListDelete name",
                                      "gks_StringListDelete other", "document", "gkf_Close"}));
  EXPECT_EQ(toolkit().live_blocks, 0) << "the lists and the model's six arrays too";
  EXPECT_TRUE(toolkit().created.empty());
}

TEST_F(ProductRecord, ADetectedProductIsReleasedInAFixedOrder) {
  fileFree(full_record(variant_eec));
  EXPECT_EQ(toolkit().log, (std::vector<std::string>{
                               "gkl_LayerClose", "gkl_LayerClose", "gks_StringListDelete name",
                               "gks_StringListDelete other", "document", "gkf_Close"}));
  EXPECT_EQ(toolkit().live_blocks, 0);
}

TEST_F(ProductRecord, AnEmptyRecordIsReleasedWithoutACall) {
  fileFree(tsx_CreateRecord());
  EXPECT_TRUE(toolkit().log.empty());
}

// Every step that can fail ends the release at once; its report stays, neither printed nor deleted.
TEST_F(ProductRecord, AFailingStepEndsTheReleaseAtOnce) {
  const struct {
    const char* operation;
    int call;
    std::int32_t variant;
    const char* message;
    std::vector<std::string> log;
    int reports;  // with the toolkit's own, where the operation reports
  } cases[] = {
      {"gkf_fclose", 1, variant_ssc, "Closing COSAR image file failed", {"gkf_fclose"}, 1},
      {"gkf_fclose",
       2,
       variant_ssc,
       "Closing COSAR image file failed",
       {"gkf_fclose", "gkf_fclose"},
       1},
      {"gkl_LayerClose", 1, variant_mgd, "Closing TIFF image file failed", {"gkl_LayerClose"}, 2},
      {"gks_StringListDelete",
       1,
       variant_ssc,
       "gks_StringListDelete failed",
       {"gkf_fclose", "gkf_fclose", "gks_StringListDelete name"},
       2},
      {"gks_StringListDelete",
       2,
       variant_ssc,
       "gks_StringListDelete failed",
       {"gkf_fclose", "gkf_fclose", "gks_StringListDelete name", "gks_StringListDelete other"},
       2},
      {"gkf_Close",
       1,
       variant_ssc,
       "Closing XML file failed",
       {"gkf_fclose", "gkf_fclose", "gks_StringListDelete name", "gks_StringListDelete other",
        "document", "gkf_Close"},
       2}};
  for (const auto& failing : cases) {
    reset_toolkit();
    TsxFile* record = full_record(failing.variant);
    toolkit().fail_at[failing.operation] = toolkit().calls[failing.operation] + failing.call;
    fileFree(record);
    EXPECT_EQ(toolkit().log, failing.log) << failing.message;
    EXPECT_EQ(toolkit().created,
              (std::vector<PrintedReport>{{"fileFree", failing.message, gke_SeverityError}}));
    EXPECT_TRUE(toolkit().printed.empty()) << failing.message;
    EXPECT_EQ(toolkit().live_reports, failing.reports) << failing.message;
    EXPECT_NE(record->sarModel->rsx.elements, nullptr) << "not reached: " << failing.message;
    // What the release kept is ended here, without the toolkit's share, which ends with the test.
    delete record->product;
    delete record->sarModel;
    delete record->beta0;
    delete record;
  }
}

}  // namespace
