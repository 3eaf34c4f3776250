#include "gridkit/preference.h"

#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <string>

#include "gridkit/report.h"
#include "tests/support/scratch_folder.h"

namespace {

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

}  // namespace
