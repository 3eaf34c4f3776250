#include "gridkit/file.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "tests/support/scratch_folder.h"

namespace {

namespace fs = std::filesystem;

class Files : public testing::Test {
 protected:
  void SetUp() override {
    path = folder / "a file.txt";
    std::ofstream(path) << "first\nsecond line\nlast";
  }

  std::string line(gkf_File* file, int32_t size = 255) {
    char buffer[256];
    gke_Report* report = nullptr;
    gkf_Fgets(buffer, size, file, &report);
    if (report == nullptr) return buffer;
    gke_DeleteErrorReportEx(&report);
    return "(report)";
  }
  bool refuses(const std::string& name, const char* mode = "r") {
    gke_Report* report = nullptr;
    gkf_File* file = gkf_Open(name.c_str(), mode, &report, 0);
    const bool refused = file == nullptr && report != nullptr;
    gkf_Close(file, nullptr);
    gke_DeleteErrorReportEx(&report);
    return refused;
  }
  const ScratchFolder scratch;
  const fs::path& folder = scratch.path();
  std::string path;
};

TEST_F(Files, Exist) {
  EXPECT_EQ(gkf_FileExists(path.c_str(), nullptr), 1);
  EXPECT_EQ(gkf_FileExists("/nonexistent", nullptr), 0);
  EXPECT_EQ(gkf_FileExists(nullptr, nullptr), 0);
}

TEST_F(Files, AreReadLineByLine) {
  gkf_File* file = gkf_Open(path.c_str(), "rb", nullptr, 0);
  EXPECT_EQ(line(file), "first\n");
  EXPECT_EQ(line(file, 5), "seco") << "size - 1 characters";
  EXPECT_EQ(line(file), "nd line\n");
  EXPECT_EQ(line(file), "last");
  EXPECT_EQ(line(file), "(report)") << "the end of the file";
  gke_Report* report = nullptr;
  gkf_Close(file, &report);
  EXPECT_EQ(report, nullptr);
}

TEST_F(Files, ThatAreNoRegularFilesAreRefusedAtOnce) {
  EXPECT_TRUE(refuses(folder));
  EXPECT_TRUE(refuses("/nonexistent"));
  const std::string fifo = folder / "fifo";
  ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
  EXPECT_TRUE(refuses(fifo));
}

TEST_F(Files, UnknownModesAreRefused) {
  for (const char* mode : {"", "x", "rr", "r++", "rb+x"}) EXPECT_TRUE(refuses(path, mode)) << mode;
}

TEST_F(Files, OpeningForWritingNeitherCreatesNorEmpties) {
  EXPECT_TRUE(refuses(folder / "new", "w"));
  gkf_File* file = gkf_Open(path.c_str(), "w", nullptr, 0);
  EXPECT_EQ(line(file), "first\n");
  gkf_Close(file, nullptr);
  EXPECT_EQ(fs::file_size(path), 22U);
}

TEST_F(Files, AFailedCloseLeavesAHandleThatClosesOnceMore) {
  const int next = ::dup(0);
  ::close(next);
  gkf_File* file = gkf_Open(path.c_str(), "r", nullptr, 0);
  ASSERT_EQ(::close(next), 0) << "the handle's own descriptor, closed behind its back";
  gke_Report* report = nullptr;
  gkf_Close(file, &report);
  EXPECT_NE(report, nullptr);
  gke_DeleteErrorReportEx(&report);
  gkf_Close(file, &report);
  EXPECT_EQ(report, nullptr);
}

TEST_F(Files, ALineNeedsRoom) {
  char none = 'x';
  for (char* buffer : {static_cast<char*>(nullptr), &none}) {
    gke_Report* report = nullptr;
    gkf_Fgets(buffer, 0, nullptr, &report);
    ASSERT_NE(report, nullptr);
    EXPECT_STREQ(gke_ReportMessage(report), "no room for a line");
    gke_DeleteErrorReportEx(&report);
  }
  EXPECT_EQ(none, 'x');
}

TEST_F(Files, NullHandlesAreAnswered) {
  gke_Report* report = nullptr;
  gkf_Close(nullptr, &report);
  EXPECT_EQ(report, nullptr);
  EXPECT_EQ(line(nullptr), "(report)");
}

}  // namespace
