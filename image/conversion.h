#pragma once

#include <cstddef>
#include <cstdint>

#include "gridkit/layer.h"

// From complex samples to 16-bit pixels, the same to the bit on every machine.

// `count` samples of a line as the file holds them, I then Q with the most significant byte first,
// to two planes in host order.
void tsx_SplitLine(const std::int16_t* line, std::int16_t* i, std::int16_t* q, std::size_t count);

// Moduli of `count` samples: squares, sum and root in 32-bit floating point, truncated toward zero.
// The largest is 46340, so nothing is clamped.
void tsx_ConvertMagnitude(const std::int16_t* i, const std::int16_t* q, std::uint16_t* pixels,
                          std::size_t count);

// Phases of `count` samples, as the 16 bits of a signed number: a full turn spans the 16-bit range,
// -pi to pi is -32768 to 32767. The angle is rounded to 32-bit floating point, scaled by
// 10430.3783505 in 64-bit and truncated toward zero; a result of 32768 wraps. A sample on either
// axis, not only the origin, is 0.
void tsx_ConvertPhase(const std::int16_t* i, const std::int16_t* q, std::uint16_t* pixels,
                      std::size_t count);

// The first [height][width] pixels of a rectangle of 64-bit floats: each value truncated toward
// zero, its low 16 bits kept, so that a value outside the 16-bit range wraps. What is no integer of
// 64 bits gives 0.
void tsx_NarrowPixels(const gkl_PixelRect& rect, std::int32_t width, std::int32_t height,
                      std::uint16_t* pixels);
