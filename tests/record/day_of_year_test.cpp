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
  EXPECT_EQ(tsx_DayOfYear(2008, 0, 5), 5) << "a month of 1 or less adds nothing";
  EXPECT_EQ(tsx_DayOfYear(2007, 14, 1), 366) << "and one past the last adds no more than all";
}

}  // namespace
