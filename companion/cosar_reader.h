#pragma once

#include <cstdint>

#include "companion/cosar_file.h"
#include "companion/window.h"
#include "gridkit/companion.h"

namespace companion {

// Reads a window of a burst, pairs of 16-bit values in host order. `progress` tells how far it
// came, also when it throws Failure. The window is a checked one. Memory: 64 KiB.
void read_cosar(const CosarFile& cosar, const CosarBurst& burst, const gkc_Window& window,
                Progress& progress);

// The valid samples of lines, from the words at the head of each: clamped to the line's samples.
// `progress` tells the lines that came.
void read_valid_samples(const CosarFile& cosar, const CosarBurst& burst, std::int64_t first_line,
                        std::int64_t lines, gkc_ValidSamples* valid, Progress& progress);

}  // namespace companion
