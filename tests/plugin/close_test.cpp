#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "gridkit/memory.h"
#include "plugin/open_product.h"
#include "plugin/product_record.h"
#include "record/exports.h"
#include "record/run_counters.h"
#include "record/tsx_file.h"
#include "support/fake_document.h"
#include "support/fake_toolkit.h"

namespace {

class Close : public OpenProduct {};

TEST_F(Close, OfNullDoesNothing) {
  const int32_t before = s_tsxFileCloseCount;
  EXPECT_EQ(tsxFileClose(nullptr), 0);
  EXPECT_EQ(s_tsxFileCloseCount, before);
  EXPECT_TRUE(toolkit().debug.empty());
}

TEST_F(Close, ReleasesInAFixedOrder) {
  bool deleted = false;
  document->deleted = &deleted;
  document->layers = 2;
  TsxFile* record = open();
  int32_t count = 0;
  char** names = nullptr;
  tsxFileLayerNamesGet(record, &count, &names);
  toolkit().log.clear();
  toolkit().debug.clear();
  const int32_t before = s_tsxFileCloseCount;
  EXPECT_EQ(tsxFileClose(record), 0);
  EXPECT_EQ(s_tsxFileCloseCount, before + 1);
  EXPECT_EQ(toolkit().debug, std::vector<std::string>{
                                 "\n s_tsxFileCloseCount: " + std::to_string(before + 1) + " \n"});
  EXPECT_EQ(toolkit().log,
            (std::vector<std::string>{"gkf_fclose", "gkf_fclose",
                                      "gks_StringListDelete X_HH_MAGNITUDE_1", "gkf_Close"}));
  EXPECT_TRUE(deleted);
  for (int32_t i = 0; i < count; ++i) gkm_HeapFree(names[i]);
  gkm_HeapFree(names);
}

TEST_F(Close, AFailingStepEndsTheReleaseInSilence) {
  bool deleted = false;
  document->deleted = &deleted;
  document->layers = 2;
  TsxFile* record = open();
  toolkit().fail_at["gkf_fclose"] = 1;
  toolkit().log.clear();
  EXPECT_EQ(tsxFileClose(record), 0);
  EXPECT_EQ(toolkit().log, std::vector<std::string>{"gkf_fclose"});
  EXPECT_FALSE(deleted) << "what was not yet released stays";
  EXPECT_TRUE(toolkit().printed.empty());
  EXPECT_EQ(toolkit().live_reports, 1) << "the report is neither printed nor deleted";
}

TEST_F(Close, EachStepOfTheReleaseCanEndIt) {
  struct Step {
    const char* operation;
    const char* variant;
    std::size_t reports;
  };
  for (const Step& step : {Step{"gkl_LayerClose", "GEC", gke_SeverityError},
                           Step{"gks_StringListDelete", "SSC", gke_SeverityError},
                           Step{"gkf_Close", "SSC", gke_SeverityError}}) {
    delete toolkit().document;
    reset_toolkit();
    toolkit().files[path] = annotation;
    toolkit().files["/products/one/IMAGEDATA/image0"] = "x";
    auto* made = new FakeDocument;
    made->variant = step.variant;
    toolkit().document = made;
    TsxFile* record = open();
    int32_t count = 0;
    char** names = nullptr;
    tsxFileLayerNamesGet(record, &count, &names);
    toolkit().fail_at[step.operation] = toolkit().calls[step.operation] + 1;
    tsxFileClose(record);
    EXPECT_EQ(toolkit().live_reports, static_cast<int>(step.reports)) << step.operation;
    EXPECT_TRUE(toolkit().printed.empty()) << step.operation;
  }
  toolkit().document = nullptr;
}

TEST_F(Close, TheReleaseCallbackAcceptsNull) {
  EXPECT_EQ(tsx_ReleaseRecord(nullptr), 0);
}

TEST_F(Close, ARecordThatWasNeverRegisteredIsNotEnded) {
  toolkit().document_error = lmx::error_malformed;
  TsxFile* record = open();
  toolkit().log.clear();
  EXPECT_EQ(tsxFileClose(record), 0);
  EXPECT_TRUE(toolkit().log.empty());
}

}  // namespace
