#pragma once

#include <cstdint>

#include "record/tsx_file.h"

// Stores what the rest of the program turns on: variant, counts, sizes, map projection and
// calibration factor. The record's document is set. A variant text outside the four gives
// variant_unknown.
void tsx_ReadGeneralParms(TsxFile* record);
