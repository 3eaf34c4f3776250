#include "record/day_of_year.h"

#include <gtest/gtest.h>

namespace {

TEST(DayOfYear, FollowsTheGregorianRule) {
  EXPECT_EQ(tsx_DayOfYear(2000, 3, 1), 61);
  EXPECT_EQ(tsx_DayOfYear(1900, 3, 1), 60);
  EXPECT_EQ(tsx_DayOfYear(2008, 2, 29), 60);
  EXPECT_EQ(tsx_DayOfYear(2007, 1, 1), 1);
  EXPECT_EQ(tsx_DayOfYear(2007, 12, 31), 365);
  EXPECT_EQ(tsx_DayOfYear(2008, 12, 31), 366);
  EXPECT_EQ(tsx_DayOfYear(2200, 3, 1), 60) << "a century that 400 does not divide";
  // Days before each month of a common year: running sums of 31, 28, 31, 30, 31, 30, 31, 31, ...
  const std::int32_t before[] = {0, 31, 59, 90, 120, 151, 181, 212, 243, 273, 304, 334};
  for (std::int32_t month = 1; month <= 12; ++month) {
    EXPECT_EQ(tsx_DayOfYear(2007, month, 15), before[month - 1] + 15) << month;
    EXPECT_EQ(tsx_DayOfYear(2008, month, 15), before[month - 1] + 15 + (month > 2 ? 1 : 0));
  }
  EXPECT_EQ(tsx_DayOfYear(2008, 0, 5), 5) << "a month of 1 or less adds nothing";
  EXPECT_EQ(tsx_DayOfYear(2007, 14, 1), 366) << "and one past the last adds no more than all";
}

}  // namespace
