#include "gridkit/host/block_limits.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "gridkit/host/tail.h"

namespace {

using gridkit::BlockLimits;
using gridkit::find_block_limits;

// A file of lines of pixels one after the other, each led by two pixels' room, as much of it as is
// there; and an image that lets blocks start in all but its last lines. Written as a list of the
// pixels that a block needs, apart from what the code makes of it.
struct Image {
  std::int32_t width;
  std::int32_t height;
  std::int64_t held;         // pixels of the file, heads of lines included
  std::int64_t last_starts;  // the first place in the file that no block starts at

  std::int64_t place(std::int64_t line, std::int64_t column) const {
    return line * (width + 2) + 2 + column;
  }
  bool comes(std::int32_t size, std::int32_t row, std::int32_t column) const {
    const std::int64_t last_line = std::int64_t{row} * size + size - 1;
    const std::int64_t behind_last = std::int64_t{column} * size + size;
    return place(std::int64_t{row} * size, std::int64_t{column} * size) < last_starts &&
           place(last_line, behind_last) <= held;
  }
  BlockLimits limits() const {
    return find_block_limits(width, height, [&](auto... block) { return comes(block...); });
  }
  // Whether a block of any size brings the pixel.
  bool can_come(std::int32_t line, std::int32_t column) const {
    for (std::int32_t size = 1; size <= std::min(width, height); ++size) {
      if (comes(size, line / size, column / size)) return true;
    }
    return false;
  }
  bool line_can_come(std::int32_t line) const {
    for (std::int32_t column = 0; column < width; ++column) {
      if (!can_come(line, column)) return false;
    }
    return true;
  }
};

// An image with its whole file, of which blocks start everywhere but in the last `refused` lines.
Image whole(std::int32_t width, std::int32_t height, std::int32_t refused) {
  Image image{width, height, 0, 0};
  image.held = image.place(height - 1, width);
  image.last_starts = image.place(height - refused, 0);
  return image;
}

// The same with a file that ends after some columns of a line.
Image cut(Image image, std::int32_t lines, std::int32_t columns) {
  image.held = columns > 0 ? image.place(lines, columns) : image.place(lines - 1, image.width);
  return image;
}

// What is missing after all that read_window does with the lines from `first` on.
std::vector<gridkit::LineRange> missing_of(const Image& image, std::int32_t first) {
  const BlockLimits limits = image.limits();
  gridkit::Tail tail({0, first, image.width, image.height - first}, image.width, limits);
  tail.read_with_best_sizes(
      [&](std::int32_t size, std::int32_t row, std::int32_t column, auto& block) {
        block.resize(static_cast<std::size_t>(size) * static_cast<std::size_t>(size));
        return image.comes(size, row, column);
      });
  return tail.missing();
}

TEST(BlockLimits, OfAnImageWithoutAnyAreItsOwn) {
  const BlockLimits limits = whole(20, 30, 0).limits();
  EXPECT_EQ(limits.line, 30);
  EXPECT_EQ(limits.column, 0);
  EXPECT_EQ(limits.end, 30);
}

TEST(BlockLimits, TellWhereNoBlockStartsFromWhereTheDataEnd) {
  BlockLimits limits = whole(20, 30, 7).limits();
  EXPECT_EQ(limits.line, 23);
  EXPECT_EQ(limits.column, 0);
  EXPECT_EQ(limits.end, 30);
  limits = cut(whole(20, 30, 7), 15, 0).limits();
  EXPECT_EQ(limits.line, 15);
  EXPECT_EQ(limits.column, 0);
  EXPECT_EQ(limits.end, 15);
}

TEST(BlockLimits, FindALineThatBreaksOff) {
  const BlockLimits limits = cut(whole(20, 30, 7), 15, 11).limits();
  EXPECT_EQ(limits.line, 15);
  EXPECT_EQ(limits.column, 11);
  EXPECT_EQ(limits.end, 15);
}

TEST(BlockLimits, OfAnImageOfWhichNothingComes) {
  const BlockLimits limits = whole(20, 4, 4).limits();
  EXPECT_EQ(limits.line, 0);
  EXPECT_EQ(limits.column, 0);
  EXPECT_EQ(limits.end, 0);
}

TEST(BlockLimits, AreFoundWithFewProbes) {
  const Image image = whole(20000, 30000, 8);
  int probes = 0;
  find_block_limits(image.width, image.height, [&](auto... block) {
    ++probes;
    return image.comes(block...);
  });
  EXPECT_LE(probes, 50);
}

// Of a file that was cut every whole line comes, wherever that was: all of it is above the lines in
// which no block starts.
TEST(BlockLimits, EveryLineOfAFileThatWasCutComes) {
  for (const std::int32_t width : {64, 97, 130}) {
    const Image all = whole(width, 140, 9);
    for (std::int32_t lines = 1; lines <= 131; ++lines) {
      for (const std::int32_t columns : {0, 1, width / 2, width - 1}) {
        const std::int32_t first = lines / 64 * 64;  // as the rows of blocks above have come
        const auto missing = missing_of(cut(all, lines, columns), first);
        std::int32_t next = lines;
        for (const auto& range : missing) {
          EXPECT_EQ(range.first, next) << width << ' ' << lines << ' ' << columns;
          next = range.last + 1;
        }
        EXPECT_EQ(next, 140) << width << ' ' << lines << ' ' << columns;
      }
    }
  }
}

TEST(BlockLimits, TellWhereTheDataEndIfBlocksTellIt) {
  EXPECT_EQ(cut(whole(20, 30, 7), 15, 0).limits().data_end, 15);
  EXPECT_EQ(cut(whole(20, 30, 7), 15, 11).limits().data_end, 15);
  // Within the first line nothing above it tells: the block of 2 x 2 pixels from the first one on
  // is refused, which ends in line 1.
  EXPECT_EQ(cut(whole(20, 30, 7), 0, 11).limits().data_end, 1);
  // In the last lines no block may start, and no refused one ends past the data.
  EXPECT_GT(whole(20, 30, 7).limits().data_end, 30);
  EXPECT_GT(whole(20, 4, 4).limits().data_end, 4);
}

TEST(BlockLimits, NoLineThatTheFileHoldsIsCalledWithoutData) {
  for (const std::int32_t height : {41, 120, 127, 131}) {
    for (const std::int32_t width : {30, 60, 73, 200}) {
      for (std::int32_t lines = 1; lines <= height; ++lines) {
        for (const auto& range : missing_of(cut(whole(width, height, 9), lines, 0), 0)) {
          if (range.why != gridkit::Unread::no_data) continue;
          EXPECT_GE(range.first, lines) << width << " x " << height;
        }
      }
    }
  }
}

TEST(BlockLimits, NoMissingLineOfAWholeFileIsCalledWithoutData) {
  for (std::int32_t height = 10; height < 200; ++height) {
    for (const auto& range : missing_of(whole(60, height, 9), 0)) {
      EXPECT_EQ(range.why, gridkit::Unread::out_of_reach) << height << ": " << range.first;
    }
  }
}

// Where the file ends among those lines, what some block brings in whole lines comes.
TEST(BlockLimits, WhatSomeBlockBringsComesNearTheBottomToo) {
  for (const std::int32_t height : {120, 127, 128, 131}) {
    for (const std::int32_t width : {60, 73, 128, 200}) {
      for (std::int32_t lines = height - 9; lines <= height; ++lines) {
        const Image image = cut(whole(width, height, 9), lines, 0);
        const std::int32_t first = (height - 10) / 64 * 64;
        std::vector<bool> is_missing(static_cast<std::size_t>(height), false);
        for (const auto& range : missing_of(image, first)) {
          for (std::int32_t line = range.first; line <= range.last; ++line) {
            is_missing[static_cast<std::size_t>(line)] = true;
          }
        }
        for (std::int32_t line = first; line < height; ++line) {
          EXPECT_NE(is_missing[static_cast<std::size_t>(line)], image.line_can_come(line))
              << width << " x " << height << ", " << lines << " lines held, line " << line;
        }
      }
    }
  }
}

}  // namespace
