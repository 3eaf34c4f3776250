#include "gridkit/report.h"

#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <string>

#include "debug/debug_channel.h"
#include "gridkit/preference.h"
#include "handlepool/handlepool.h"
#include "tests/support/scratch_folder.h"

namespace {

TEST(Report, PrintsTheChainNewestFirst) {
  gke_Report* report = gke_CreateErrorReport("gkf_Close", 1, 0, nullptr, "old", 0);
  report = gke_CreateErrorReport("tsxLayerOpen", 2, 2, report, "100% new", 0);
  testing::internal::CaptureStderr();
  gke_PrintErrorReport(report, 0, 0);
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "gridkit: tsxLayerOpen: 100% new\ngridkit: warning: gkf_Close: old\n");
  EXPECT_EQ(gke_ReportLine(report), 2);
  EXPECT_EQ(gke_ReportSeverity(gke_ReportPrevious(report)), 0);
  gke_DeleteErrorReportEx(&report);
  EXPECT_EQ(report, nullptr);
  gke_DeleteErrorReportEx(&report);
  gke_DeleteErrorReportEx(nullptr);
}

TEST(Report, GoesToAnInstalledSinkInstead) {
  std::string seen;
  const auto sink = [](const gke_Report* r, void* text) {
    *static_cast<std::string*>(text) += gke_ReportMessage(r);
  };
  const gke_ReportSinkSetting before = gke_SetReportSink({sink, &seen});
  gke_Report* report = gke_CreateErrorReport("w", 1, 2, nullptr, "m", 0);
  testing::internal::CaptureStderr();
  gke_PrintErrorReport(report, 0, 0);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
  EXPECT_EQ(seen, "m");
  gke_SetReportSink(before);
  gke_DeleteErrorReportEx(&report);
}

TEST(DebugChannel, IsSilentUntilTurnedOn) {
  testing::internal::CaptureStderr();
  OutputDebugStringA("hidden");
  debug_EnableChannel(1);
  OutputDebugStringA("\n s_count: 1 \n");
  OutputDebugStringA(nullptr);
  debug_EnableChannel(0);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "\n s_count: 1 \n");
  EXPECT_NE(DisableThreadLibraryCalls(nullptr), 0);
}

TEST(Preference, IsTheDefaultUntilSet) {
  EXPECT_EQ(gkp_GetNumberPreference("g", "n", 64.0, nullptr), 64.0);
  EXPECT_EQ(gkp_SetNumberPreference("g", "n", 100.9, nullptr), 0);
  EXPECT_EQ(gkp_GetNumberPreference("g", "n", 64.0, nullptr), 100.9);
  EXPECT_EQ(gkp_SetNumberPreference("g", "n", std::nan(""), nullptr), -1);
  gkp_ClearNumberPreference("g", "n");
  EXPECT_EQ(gkp_GetNumberPreference("g", "n", 64.0, nullptr), 64.0);
}

class PreferencesFile : public testing::Test {
 protected:
  std::string load(const std::string& content) {
    std::ofstream(path) << content;
    gke_Report* report = nullptr;
    const int32_t result = gkp_LoadPreferences(path.c_str(), &report);
    const std::string message = report == nullptr ? "" : gke_ReportMessage(report);
    EXPECT_EQ(result, message.empty() ? 0 : -1);
    gke_DeleteErrorReportEx(&report);
    return message;
  }
  void TearDown() override { gkp_ClearNumberPreference("import", "default_block_size"); }
  const ScratchFolder folder;
  const std::string path = folder / "preferences";
};

TEST_F(PreferencesFile, SetsItsValues) {
  EXPECT_EQ(load("# comment\n\nimport.default_block_size = 128  # blocks\r\n"), "");
  EXPECT_EQ(gkp_GetNumberPreference("import", "default_block_size", 64, nullptr), 128);
}

TEST_F(PreferencesFile, IsRefusedAsAWholeWithItsLine) {
  const std::string message = load("import.default_block_size = 32\nimport = 7\n");
  EXPECT_EQ(message, path + ":2: expected `group.name = number`, found `import = 7`");
  EXPECT_EQ(gkp_GetNumberPreference("import", "default_block_size", 64, nullptr), 64);
  EXPECT_NE(load("a.b = 1x\n"), "");
  EXPECT_NE(load("a.b = inf\n"), "");
  EXPECT_NE(load("a.b\n"), "");
}

TEST_F(PreferencesFile, HasAtMostAMebibyte) {
  EXPECT_EQ(load(std::string((1 << 20) - 1, '#') + "\n"), "");
  EXPECT_EQ(load(std::string(1 << 20, '#') + "\n"),
            path + ": a preferences file has at most 1048576 bytes");
}

TEST_F(PreferencesFile, MustExist) {
  EXPECT_EQ(gkp_LoadPreferences("/nonexistent", nullptr), -1);
  EXPECT_EQ(gkp_LoadPreferences(nullptr, nullptr), -1);
}

int32_t released = 0;
int32_t release(void* handle) {
  released += *static_cast<int32_t*>(handle);
  return 0;
}

TEST(Pool, EndsAnEntryOnce) {
  int32_t one = 1;
  int32_t ten = 10;
  released = 0;
  EXPECT_EQ(pool_FindFileHandleIfOpen("a", 0), nullptr);
  EXPECT_EQ(pool_AddFileHandleToList(&one, "a", release), 0);
  EXPECT_EQ(pool_AddFileHandleToList(&ten, "a", release), 0);
  EXPECT_EQ(pool_FindFileHandleIfOpen("a", 0), &ten) << "the newer answers";
  pool_RemoveFileHandleFromList("a", 0);
  EXPECT_EQ(released, 10);
  EXPECT_EQ(pool_FindFileHandleIfOpen("a", 0), &one);
  pool_RemoveFileHandleFromList("a", 0);
  pool_RemoveFileHandleFromList("a", 0);
  EXPECT_EQ(released, 11);
  pool_RemoveFileHandleFromList(nullptr, 0);
  EXPECT_EQ(pool_AddFileHandleToList(nullptr, "a", release), -1);
  EXPECT_EQ(pool_FindFileHandleIfOpen(nullptr, 0), nullptr);
}

TEST(Pool, ACallbackMayUseThePool) {
  int32_t handle = 0;
  pool_AddFileHandleToList(&handle, "b", [](void* record) {
    EXPECT_EQ(pool_FindFileHandleIfOpen("b", 0), nullptr) << "already out";
    *static_cast<int32_t*>(record) = 1;
    return 0;
  });
  pool_RemoveFileHandleFromList("b", 0);
  EXPECT_EQ(handle, 1);
}

}  // namespace
