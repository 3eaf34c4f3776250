#include "gridkit/host/tail.h"

#include <gtest/gtest.h>

namespace {

using gridkit::Tail;

TEST(Tail, FillsLinesFromTheLeft) {
  Tail tail({0, 8, 6, 2}, 6, {10, 0, 10});
  EXPECT_EQ(tail.lines(), 2);
  EXPECT_FALSE(tail.is_complete());
  const std::vector<std::uint16_t> block(25, 9);
  tail.deliver(5, 1, 1, block);
  EXPECT_EQ(tail.missing().size(), 1U) << "the right part waits for the left";
  EXPECT_EQ(tail.pixels()[5], 0);
  tail.deliver(5, 1, 0, block);
  tail.deliver(5, 1, 1, block);
  EXPECT_TRUE(tail.is_complete());
  EXPECT_EQ(tail.pixels()[5], 9);
}

TEST(Tail, PrefersTheSizeThatEndsWithTheImage) {
  // Starts at line 32 are refused, although the block lies inside.
  const Tail tail({0, 32, 12, 4}, 12, {32, 0, 36});
  const auto size = tail.best_block_size();
  ASSERT_TRUE(size.has_value());
  EXPECT_EQ(36 % *size, 0);
  EXPECT_GT(*size, 4) << "it must start above line 32";
  EXPECT_EQ(12 % *size, 0) << "and end with the right edge";
}

TEST(Tail, OffersNothingWhereNothingMayStart) {
  EXPECT_FALSE(Tail({0, 4, 4, 1}, 4, {0, 0, 0}).best_block_size().has_value());
}

TEST(Tail, OffersNoSizeTwice) {
  Tail tail({0, 8, 4, 2}, 4, {10, 0, 10});
  const auto first = tail.best_block_size();
  ASSERT_TRUE(first.has_value());
  tail.mark_tried(*first);
  EXPECT_NE(tail.best_block_size(), first);
}

TEST(Tail, LargeBlocksBringTheBulkAndPixelsTheRest) {
  Tail tail({0, 64, 128, 37}, 128, {101, 0, 101});  // 101 is a prime
  const auto bulk = tail.best_block_size();
  ASSERT_TRUE(bulk.has_value());
  EXPECT_GE(*bulk, 8);
  for (std::int32_t size = 2; size <= 128; ++size) tail.mark_tried(size);
  EXPECT_EQ(tail.best_block_size(), 1);
}

TEST(Tail, ALineThatBreaksOffComesUpToThere) {
  const Tail tail({0, 100, 128, 1}, 128, {100, 70, 100});
  EXPECT_EQ(tail.best_block_size(), 1) << "larger blocks end below the data";
  EXPECT_EQ(tail.block_columns(1, 100).size(), 70U);
}

TEST(Tail, ARefusedBlockTellsThatTheDataEndBeforeIt) {
  Tail tail({0, 0, 8, 8}, 8, {8, 0, 8});
  tail.refuse(4, 1, 0);
  EXPECT_TRUE(tail.block_columns(4, 1).empty());
  EXPECT_EQ(tail.block_columns(4, 0).size(), 2U);
}

TEST(Tail, ARefusedBlockPastTheRightEdgeLeavesThoseInsideIt) {
  Tail tail({0, 0, 7, 8}, 7, {8, 0, 9});
  tail.refuse(4, 1, 1);
  EXPECT_EQ(tail.block_columns(4, 1).size(), 1U);
}

}  // namespace
