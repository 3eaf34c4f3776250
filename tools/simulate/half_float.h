#pragma once

#include <bit>
#include <cstdint>

namespace simulate {

inline constexpr float largest_half = 65504;

// The nearest half-precision floating number (IEEE 754 binary16), of two equally near ones the even
// one, as its 16 bits. `value` lies within the largest half.
constexpr std::uint16_t half_bits(float value) {
  const auto bits = std::bit_cast<std::uint32_t>(value);
  const std::uint32_t sign = bits >> 16U & 0x8000U;
  std::uint32_t magnitude = bits & 0x7FFFFFFFU;
  constexpr std::uint32_t smallest_normal = 0x38800000U;  // 2^-14 as a float
  if (magnitude < smallest_normal) {
    // The last place of 0.5 is worth 2^-24, as that of a subnormal half: the sum is rounded there.
    constexpr float half = 0.5F;
    const float sum = std::bit_cast<float>(magnitude) + half;
    magnitude = std::bit_cast<std::uint32_t>(sum) - std::bit_cast<std::uint32_t>(half);
  } else {
    constexpr unsigned dropped = 13;               // a float's mantissa has so many bits more
    constexpr std::uint32_t rebias = 112U << 23U;  // exponents count from 127 there, 15 here
    const std::uint32_t odd = magnitude >> dropped & 1U;
    magnitude = (magnitude - rebias + 0xFFFU + odd) >> dropped;
  }
  return static_cast<std::uint16_t>(sign | magnitude);
}

}  // namespace simulate
