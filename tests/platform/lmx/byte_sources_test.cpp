#include "lmx/byte_sources.h"

#include <gtest/gtest.h>

#include <array>
#include <fstream>
#include <string>

#include "tests/support/scratch_folder.h"

namespace {

using namespace lmx;

std::string read(ByteSource& source, std::uint64_t offset, std::size_t size) {
  std::string text(size, '?');
  const std::ptrdiff_t got = source.read(offset, text);
  return got < 0 ? "error" : text.substr(0, static_cast<std::size_t>(got));
}

void expect_the_digits(ByteSource& source) {
  EXPECT_TRUE(source.is_open());
  EXPECT_EQ(read(source, 0, 4), "0123");
  EXPECT_EQ(read(source, 7, 100), "789");
  EXPECT_EQ(read(source, 3, 2), "34") << "any place may be asked for";
  EXPECT_EQ(read(source, 10, 1), "");
  EXPECT_EQ(read(source, 1'000'000, 1), "");
  EXPECT_EQ(read(source, 2, 0), "");
}

TEST(MemorySource, GivesAnyPartOfTheBuffer) {
  MemorySource source("0123456789x", 10);
  expect_the_digits(source);
}

TEST(FileSource, GivesAnyPartOfTheFile) {
  const ScratchFolder scratch;
  std::ofstream(scratch / "file") << "0123456789";
  FileSource source((scratch / "file").c_str());
  expect_the_digits(source);
}

TEST(FileSource, IsClosedAndEmptyWithoutAFile) {
  for (const char* name : {static_cast<const char*>(nullptr), "/", "/no/such/file"}) {
    FileSource source(name);
    EXPECT_FALSE(source.is_open());
    EXPECT_EQ(read(source, 0, 1), "");
  }
}

// A file that opens but cannot be read: the process's own memory at address 0.
TEST(FileSource, TellsThatReadingFailed) {
  FileSource source("/proc/self/mem");
  ASSERT_TRUE(source.is_open());
  EXPECT_EQ(read(source, 0, 1), "error");
}

}  // namespace
