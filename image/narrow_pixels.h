#pragma once

#include <cstdint>

#include "gridkit/layer.h"

// The first [height][width] pixels of a rectangle of 64-bit floats: each value truncated toward
// zero, its low 16 bits kept, so that a value outside the 16-bit range wraps. What is no integer of
// 64 bits gives 0.
void tsx_NarrowPixels(const gkl_PixelRect& rect, std::int32_t width, std::int32_t height,
                      std::uint16_t* pixels);
