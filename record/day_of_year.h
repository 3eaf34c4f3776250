#pragma once

#include <cstdint>

// Day of the year, from 1, by the Gregorian rule. Month and day count from 1 and are not tested.
std::int32_t tsx_DayOfYear(std::int32_t year, std::int32_t month, std::int32_t day);
