#pragma once

#include <cstddef>
#include <cstdint>

// From samples to numbers and pixels. The same to the bit on every machine: one source, compiled
// for several instruction sets, the best of which is chosen when it is first asked for. Sources and
// targets are contiguous and do not overlap; `count` may be 0. Samples of complex images are pairs,
// I then Q.
namespace conversion {

// `count` samples of a line as a file holds them, each half with the most significant byte first,
// to two planes in host order.
void split_big_endian(const std::int16_t* line, std::int16_t* i, std::int16_t* q,
                      std::size_t count);

// `count` samples in host order to two planes.
void split(const std::int16_t* samples, std::int16_t* i, std::int16_t* q, std::size_t count);

// `count` 16-bit values with the most significant byte first to host order, where they stand.
void from_big_endian(std::uint16_t* values, std::size_t count);

// Moduli of `count` samples: squares, sum and root in 32-bit floating point, truncated toward zero.
// The largest is 46340, so nothing is clamped.
void magnitude(const std::int16_t* i, const std::int16_t* q, std::uint16_t* pixels,
               std::size_t count);

// Phases of `count` samples, as the 16 bits of a signed number: a full turn spans the 16-bit range,
// -pi to pi is -32768 to 32767. The angle is rounded to 32-bit floating point, scaled by
// 10430.3783505 in 64-bit and truncated toward zero; a result of 32768 wraps. A sample on either
// axis, not only the origin, is 0.
void phase(const std::int16_t* i, const std::int16_t* q, std::uint16_t* pixels, std::size_t count);

// Each value truncated toward zero, its low 16 bits kept, so that a value outside the 16-bit range
// wraps. What is no integer of 64 bits gives 0.
void narrow(const double* values, std::uint16_t* pixels, std::size_t count);

// Integers, and IEEE 754 half-precision numbers by their bits, as 32-bit floating point; both are
// exact. A not-a-number stays one.
void widen_integers(const std::int16_t* values, float* floats, std::size_t count);
void widen_pixels(const std::uint16_t* values, float* floats, std::size_t count);
void widen_halves(const std::uint16_t* values, float* floats, std::size_t count);

// Moduli of `count` samples, sqrt(I^2 + Q^2): squares, sum and root in 32-bit floating point.
void moduli(const float* samples, float* moduli, std::size_t count);

// Angles of `count` samples in radians, -pi to pi, atan2(Q, I) to within one unit in the last place
// of 32-bit floating point. Of (0, 0) it is 0; a zero's sign says nothing, so a sample on the
// negative I axis has pi. Not-a-number where I or Q is, or where both are infinite.
void angles(const float* samples, float* angles, std::size_t count);

// Powers of `count` samples, I^2 + Q^2 in 64-bit floating point, exact for 16-bit integers; and the
// squares of `count` numbers.
void powers(const float* samples, double* powers, std::size_t count);
void squares(const float* values, double* squares, std::size_t count);

// factor * power in 64-bit floating point, rounded to 32.
void scale(const double* powers, double factor, float* scaled, std::size_t count);

// 10 log10(factor * power) to within one unit in the last place of 32-bit floating point; minus
// infinity for 0, not-a-number for negative products. `factor * power` is 0 or a normal number.
void decibels(const double* powers, double factor, float* decibels, std::size_t count);

// (factor * power - noise) * gain in 64-bit floating point, each operation rounded.
void weigh(const double* powers, double factor, const double* noise, const double* gains,
           double* weighed, std::size_t count);

// Value k is first + slope * k, in 64-bit floating point; `count` is below 2^31.
void ramp(double first, double slope, double* values, std::size_t count);

// a + weight * (b - a) in 64-bit floating point.
void blend(const double* a, const double* b, double weight, double* blended, std::size_t count);

}  // namespace conversion
