#include "geometry/mif_node.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "geometry/designs.h"
#include "gridkit/memory.h"
#include "support/fake_toolkit.h"

namespace {

class MifNode : public testing::Test {
 protected:
  void SetUp() override {
    reset_toolkit();
    dictionary = gkd_DictionaryCreate(nullptr);
    design = tsx_CreateBeta0Design(dictionary, nullptr);
  }
  void TearDown() override {
    for (void* block : std::vector<void*>{data, text, type}) gkm_HeapFree(block);
    gkd_DesignDestroy(design);
    gke_DeleteErrorReportEx(&report);
    EXPECT_EQ(toolkit().live_blocks, 0);
    EXPECT_EQ(toolkit().live_reports, 0);
  }
  void create(gke_Report** err) {
    tsx_CreateMIFNode("object", dictionary, design, &data, &size, &text, &type, err);
  }
  gkd_Dictionary* dictionary = nullptr;
  gkd_Design* design = nullptr;
  void* data = nullptr;
  std::int32_t size = 0;
  char* text = nullptr;
  char* type = nullptr;
  gke_Report* report = nullptr;
};

TEST_F(MifNode, HoldsAllThatTheHostNeeds) {
  create(&report);
  EXPECT_EQ(report, nullptr);
  EXPECT_EQ(size, 4);
  EXPECT_EQ(std::string(static_cast<char*>(data), 4), "obje");
  EXPECT_STREQ(text, "dictionary of TSX_Beta0");
  EXPECT_STREQ(type, "TSX_Beta0");
}

TEST_F(MifNode, EndsAtTheFirstFailureAndKeepsWhatWasMade) {
  struct Step {
    const char* operation;
    const char* message;
    bool has_text, has_size, has_type, has_data;
  };
  const Step steps[] = {
      {"gkd_DictionaryAddDesign", "dictionary add failed", false, false, false, false},
      {"gkd_DictionaryEncodeToString", "gkd_DictionaryEncodeToString failed", false, false, false,
       false},
      {"gkd_ObjectSize", "gkd_ObjectSize failed", true, true, false, false},
      {"gks_Sprintf", "gks_Sprintf failed", true, true, false, false},
      {"gkm_HeapMalloc", "No Memory in vexcel_slc_CreateMIFNode", true, true, true, false},
      {"gkd_ConvertToMIF", "failing in gkd_ConvertToMIF", true, true, true, true}};
  for (const Step& step : steps) {
    TearDown();
    SetUp();
    data = nullptr;
    text = type = nullptr;
    size = 0;
    toolkit().fail_at[step.operation] = 1;
    create(nullptr);
    ASSERT_FALSE(toolkit().printed.empty()) << step.operation;
    EXPECT_EQ(toolkit().printed.front(),
              (PrintedReport{"tsx_CreateMIFNode", step.message, gke_SeverityError}));
    EXPECT_EQ(text != nullptr, step.has_text) << step.operation;
    EXPECT_EQ(size != 0, step.has_size) << step.operation;
    EXPECT_EQ(type != nullptr, step.has_type) << step.operation;
    EXPECT_EQ(data != nullptr, step.has_data) << step.operation;
  }
}

TEST_F(MifNode, LeavesItsReportToACallerWithASlot) {
  toolkit().fail_at["gkd_ObjectSize"] = 1;
  create(&report);
  EXPECT_NE(report, nullptr);
  EXPECT_TRUE(toolkit().printed.empty());
}

TEST_F(MifNode, DropsWhatTheSlotHeld) {
  report = gke_CreateErrorReport("word", 1, gke_SeverityError, nullptr, "of the design", 0);
  create(&report);
  EXPECT_EQ(report, nullptr);
}

}  // namespace
