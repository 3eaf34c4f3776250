#include "lmx/text_position.h"

#include <gtest/gtest.h>

#include <string>
#include <tuple>

namespace {

using namespace lmx;

std::tuple<std::uint64_t, std::uint64_t, std::uint64_t> find(PositionFinder& finder,
                                                             std::uint64_t offset) {
  const TextPosition found = finder.position_of(offset);
  return {found.offset, found.line, found.column};
}

TEST(TextPosition, CountsLinesAndTheCharactersOfALine) {
  const std::string text = "ab\n\n\xC3\xA4\xE2\x82\xAC_\nc";
  MemorySource source(text.data(), text.size());
  PositionFinder finder(source);
  EXPECT_EQ(find(finder, 0), std::tuple(0, 1, 1));
  EXPECT_EQ(find(finder, 2), std::tuple(2, 1, 3)) << "the line break is of the line it ends";
  EXPECT_EQ(find(finder, 3), std::tuple(3, 2, 1));
  EXPECT_EQ(find(finder, 4), std::tuple(4, 3, 1));
  EXPECT_EQ(find(finder, 6), std::tuple(6, 3, 2)) << "two bytes before it are one character";
  EXPECT_EQ(find(finder, 9), std::tuple(9, 3, 3));
  EXPECT_EQ(find(finder, 11), std::tuple(11, 4, 1));
}

TEST(TextPosition, IsFoundBeforeThePlaceAskedForLast) {
  MemorySource source("a\nb\nc", 5);
  PositionFinder finder(source);
  EXPECT_EQ(find(finder, 5), std::tuple(5, 3, 2));
  EXPECT_EQ(find(finder, 2), std::tuple(2, 2, 1));
}

TEST(TextPosition, IsTheEndForWhatTheSourceDoesNotGive) {
  MemorySource source("a\nb", 3);
  PositionFinder finder(source);
  EXPECT_EQ(find(finder, 1000), std::tuple(3, 2, 2));
}

// Every tenth byte of a long text is a line break, so byte n is in line n / 10 + 1.
TEST(TextPosition, IsExactInLongTexts) {
  std::string text(200'000, 'x');
  for (std::size_t i = 9; i < text.size(); i += 10) text[i] = '\n';
  MemorySource source(text.data(), text.size());
  PositionFinder finder(source);
  for (const std::uint64_t place : {5ULL, 32767ULL, 32768ULL, 32769ULL, 65536ULL, 199'999ULL}) {
    EXPECT_EQ(find(finder, place), std::tuple(place, place / 10 + 1, place % 10 + 1));
  }
}

}  // namespace
