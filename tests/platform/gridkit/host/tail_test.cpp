#include "gridkit/host/tail.h"

#include <gtest/gtest.h>

namespace {

using gridkit::Tail;

TEST(Tail, FillsLinesFromTheLeft) {
  Tail tail({0, 0, 6, 10}, 8, 6, 10);
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
  Tail tail({0, 0, 12, 36}, 32, 12, 36);
  // Starts at line 32 are refused, although the block lies inside.
  tail.refuse(4, 8, 0);
  const auto size = tail.best_block_size();
  ASSERT_TRUE(size.has_value());
  EXPECT_EQ(36 % *size, 0);
  EXPECT_GT(*size, 4) << "it must start above line 32";
  EXPECT_EQ(12 % *size, 0) << "and end with the right edge";
}

TEST(Tail, OffersNoSizeTwiceAndNoneThatPromisesNothing) {
  Tail tail({0, 0, 4, 5}, 4, 4, 5);
  tail.refuse(1, 0, 0);  // nothing starts above line 0
  EXPECT_FALSE(tail.best_block_size().has_value());
}

TEST(Tail, ARefusedBlockThatReachesPastTheImageTellsNothingOfStarts) {
  Tail tail({0, 0, 4, 10}, 8, 4, 10);
  tail.refuse(4, 2, 0);
  const auto size = tail.best_block_size();
  ASSERT_TRUE(size.has_value());
  EXPECT_EQ(*size, 1) << "smallest of those that promise all";
}

}  // namespace
