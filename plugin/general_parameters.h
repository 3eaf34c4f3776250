#pragma once

#include <cstdint>

#include "record/tsx_file.h"

// Stores what the rest of the program turns on: variant, counts, sizes, map projection and
// calibration factor. The record's document is set. A variant text outside the four gives
// variant_unknown.
void tsx_ReadGeneralParms(TsxFile* record);

// Day of the year, from 1, by the Gregorian rule. Month and day count from 1 and are not tested.
std::int32_t tsx_DayOfYear(std::int32_t year, std::int32_t month, std::int32_t day);
