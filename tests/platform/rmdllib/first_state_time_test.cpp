#include <gtest/gtest.h>

#include <chrono>
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

TEST(FirstStateTime, IsTheReadingWhoseVectorsLieAboutTheScene) {
  // 23:59:20 is told as ((24 - 23) * 60 - 59) * 60 + 20 = 80. The scene's middle is 94 s. From -40
  // s on the vectors reach 230 s, their middle is 95 s; from 80 s on it would be 215 s.
  EXPECT_EQ(rmdl_FirstStateTime(80, 10, 28, 90, 8), -40);
  // From 60 s on the vectors' middle is 155 s, from -60 s on it is 35 s: 85 s and 35 s from 70 s.
  EXPECT_EQ(rmdl_FirstStateTime(60, 10, 20, 65, 10), -60);
  // The scene's middle is 150 s: now 5 s and 115 s.
  EXPECT_EQ(rmdl_FirstStateTime(60, 10, 20, 145, 10), 60);
}

TEST(FirstStateTime, OfTwoEquallyNearIsTheSameDay) {
  // One vector, at 60 s or at -60 s, and a scene at 0 s.
  EXPECT_EQ(rmdl_FirstStateTime(60, 10, 1, -4, 8), 60);
}

TEST(FirstStateTime, IsReadOnlyInFormsThatTheNumberCanHave) {
  // Below 60 s no vector of the day before has its form: its last minute starts with 60 s.
  EXPECT_EQ(rmdl_FirstStateTime(59, 10, 1, -59, 0), 59);
  // 24 h and a minute before midnight are more than the day before has.
  EXPECT_EQ(rmdl_FirstStateTime(86460, 10, 1, -86460, 0), 86460 - 172800);
  // The day after ends before 172800 s.
  EXPECT_EQ(rmdl_FirstStateTime(172800, 10, 1, 0, 0), 172800);
}

// The form that a record has for a vector, from the calendar.
double told(std::chrono::sys_seconds vector, std::chrono::sys_days scene_day) {
  using namespace std::chrono;
  const auto day_of_year = [](sys_days day) {
    return (day - sys_days(year_month_day(day).year() / January / 1)).count();
  };
  const sys_days vector_day = floor<days>(vector);
  const hh_mm_ss clock(vector - vector_day);
  const auto h = clock.hours().count();
  const auto m = clock.minutes().count();
  const auto s = clock.seconds().count();
  if (day_of_year(vector_day) < day_of_year(scene_day)) {
    return static_cast<double>(((24 - h) * 60 - m) * 60 + s);
  }
  if (day_of_year(vector_day) > day_of_year(scene_day)) {
    return static_cast<double>(((h + 24) * 60 + m) * 60 + s);
  }
  return static_cast<double>((h * 60 + m) * 60 + s);
}

// Every whole second by which a first vector can lead its scene up to half an hour, with vectors
// that reach as far beyond the scene as before it, or up to 100 s more or less.
TEST(FirstStateTime, IsFoundForEveryLeadAcrossMidnightMonthAndYear) {
  using namespace std::chrono;
  const auto midnights = {2008y / June / 6, 2008y / March / 1, 2009y / March / 1,
                          2009y / January / 1, 2008y / January / 1};
  for (const year_month_day midnight : midnights) {
    for (const seconds after : {-1790s, -600s, -61s, -5s, 0s, 1s, 59s, 90s, 600s, 1799s}) {
      const sys_seconds scene = sys_days(midnight) + after;
      const sys_days scene_day = floor<days>(scene);
      const auto start = static_cast<double>((scene - scene_day).count());
      for (seconds lead = 0s; lead <= 30min; ++lead) {
        const sys_seconds vector = scene - lead;
        const auto expected = static_cast<double>((vector - scene_day).count());
        for (const double more : {-100.0, 0.0, 100.0}) {
          const double trail = static_cast<double>(lead.count()) + more;
          const double duration = 8;
          const double interval = (static_cast<double>(lead.count()) + duration + trail) / 11;
          if (trail < 0) continue;
          ASSERT_EQ(expected,
                    rmdl_FirstStateTime(told(vector, scene_day), interval, 12, start, duration))
              << "scene at " << start << " s, lead " << lead.count() << " s, trail " << trail
              << " s";
        }
      }
    }
  }
}

TEST(FirstStateTime, StandsAsItIsWhereTheArgumentsTellNoSpan) {
  EXPECT_EQ(rmdl_FirstStateTime(70, 10, 0, -50, 8), 70);
  EXPECT_EQ(rmdl_FirstStateTime(70, 10, INT32_MIN, -50, 8), 70);
  EXPECT_EQ(rmdl_FirstStateTime(70, 10, 8641, -50, 8), -50) << "over one day";
  EXPECT_EQ(rmdl_FirstStateTime(70, 10, 8642, -50, 8), 70) << "over more than a day";
  EXPECT_EQ(rmdl_FirstStateTime(70, nan, 12, -50, 8), 70);
  EXPECT_EQ(rmdl_FirstStateTime(70, 10, 12, infinity, 8), 70);
  EXPECT_EQ(rmdl_FirstStateTime(infinity, 10, 12, -50, 8), infinity);
}

}  // namespace
