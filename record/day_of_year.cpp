#include "record/day_of_year.h"

std::int32_t tsx_DayOfYear(std::int32_t year, std::int32_t month, std::int32_t day) {
  constexpr std::int32_t lengths[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  const bool is_leap = year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
  std::int32_t result = is_leap && month > 2 ? 1 : 0;
  for (std::int32_t m = 1; m < month && m <= 12; ++m) result += lengths[m - 1];
  return result + day;
}
