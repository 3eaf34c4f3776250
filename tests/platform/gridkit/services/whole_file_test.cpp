#include "gridkit/whole_file.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>

#include "tests/support/scratch_folder.h"

namespace {

namespace fs = std::filesystem;

class WholeFile : public testing::Test {
 protected:
  static std::span<const std::byte> bytes(std::string_view text) {
    return std::as_bytes(std::span(text));
  }
  std::string content() const {
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), {}};
  }
  const ScratchFolder scratch;
  const std::string path = (scratch.path() / "x").string();
};

TEST_F(WholeFile, IsWrittenAndReplacedWhereTold) {
  gridkit::write_whole_file(path, bytes("one"), false);
  EXPECT_EQ("one", content());
  gridkit::write_whole_file(path, bytes("two"), true);
  EXPECT_EQ("two", content());
  gridkit::write_whole_file(path, {}, true);
  EXPECT_EQ("", content());
  EXPECT_EQ(1, std::distance(fs::directory_iterator(scratch.path()), {}));
}

TEST_F(WholeFile, KeepsWhatIsThere) {
  gridkit::write_whole_file(path, bytes("one"), false);
  try {
    gridkit::write_whole_file(path, bytes("two"), false);
    FAIL();
  } catch (const gridkit::Error& error) {
    EXPECT_EQ(path + ": exists already", error.what());
  }
  EXPECT_EQ("one", content());
}

TEST_F(WholeFile, LeavesNothingOfAFailure) {
  EXPECT_THROW(gridkit::write_whole_file(path + "/none", bytes("one"), false), gridkit::Error);
  fs::create_directory(path);
  EXPECT_THROW(gridkit::write_whole_file(path, bytes("one"), true), gridkit::Error);
  EXPECT_TRUE(fs::is_empty(path));
  EXPECT_EQ(1, std::distance(fs::directory_iterator(scratch.path()), {}));
}

}  // namespace
