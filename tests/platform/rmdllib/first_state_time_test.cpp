#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

#include "rmdllib/model_ephemeris.h"

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double nan = std::numeric_limits<double>::quiet_NaN();

TEST(FirstStateTime, OfTheSameDayIsTheSecondOfTheDay) {
  // 5 h 30 min 12 s = 19812 s; twelve vectors reach to 19922 s, the scene's middle is 19865 s.
  EXPECT_EQ(rmdl_FirstStateTime(19812, 10, 12, 19860, 10), 19812);
}

TEST(FirstStateTime, OfTheDayBeforeIsNegative) {
  // 23:59:10 is 50 s before midnight; its form is ((24 - 23) * 60 - 59) * 60 + 10 = 70.
  EXPECT_EQ(rmdl_FirstStateTime(70, 10, 12, 3, 8), -50);
  // 23:58:59.5 is 60.5 s before midnight; its form is ((24 - 23) * 60 - 58) * 60 + 59.5 = 179.5.
  EXPECT_EQ(rmdl_FirstStateTime(179.5, 10, 12, 3, 8), -60.5);
  // 22:00:00 is 7200 s before midnight; its form is (24 - 22) * 3600 = 7200.
  EXPECT_EQ(rmdl_FirstStateTime(7200, 60, 200, 3, 8), -7200);
}

TEST(FirstStateTime, OfTheDayAfterCountsOn) {
  // The scene starts at 23:59:55 and lasts 20 s; the first vector, at 0:00:02, has 86402.
  EXPECT_EQ(rmdl_FirstStateTime(86402, 10, 3, 86395, 20), 86402);
}

TEST(FirstStateTime, OfTheOldYearIsNegative) {
  // 31 December 23:59:10 is told as 86400 + 86350 = 172750, as if it were a day later.
  EXPECT_EQ(rmdl_FirstStateTime(172750, 10, 12, 3, 8), -50);
}

TEST(FirstStateTime, OfTheNewYearCountsOn) {
  // The scene starts at 23:59:00 on 31 December and lasts 260 s: its middle is 86470. The first
  // vector, 1 January 0:01:05 = 86465 on the axis, is told as (24 * 60 - 1) * 60 + 5 = 86345. As it
  // stands, six vectors at 2 s would reach from 86345 to 86355, short of the middle.
  EXPECT_EQ(rmdl_FirstStateTime(86345, 2, 6, 86340, 260), 86465);
}

TEST(FirstStateTime, PrefersTheSameDayWhereBothReadingsSpanTheScene) {
  // From 60 s on the vectors reach 250 s, from -60 s on 130 s: both span the middle at 70 s.
  EXPECT_EQ(rmdl_FirstStateTime(60, 10, 20, 65, 10), 60);
}

TEST(FirstStateTime, SpansTheMiddleWithBothItsEnds) {
  EXPECT_EQ(rmdl_FirstStateTime(70, 10, 6, -50, 0), -50) << "the first vector";
  EXPECT_EQ(rmdl_FirstStateTime(70, 10, 6, 0, 0), -50) << "the last vector";
}

TEST(FirstStateTime, StandsAsItIsWhereNoReadingSpansTheScene) {
  EXPECT_EQ(rmdl_FirstStateTime(70, 10, 12, 40000, 10), 70);
  EXPECT_EQ(rmdl_FirstStateTime(70, 10, 0, 3, 8), 70);
  EXPECT_EQ(rmdl_FirstStateTime(70, 10, INT32_MIN, 3, 8), 70);
  EXPECT_EQ(rmdl_FirstStateTime(70, nan, 12, 3, 8), 70);
  EXPECT_EQ(rmdl_FirstStateTime(70, 10, 12, infinity, 8), 70);
  EXPECT_EQ(rmdl_FirstStateTime(infinity, 10, 12, 3, 8), infinity);
}

}  // namespace
