#pragma once

#include <cmath>
#include <cstdint>

// The conversions of a sample as they are told, one step after the other: what every other way to
// the same pixels is compared with.

inline std::uint16_t plain_magnitude(std::int16_t i, std::int16_t q) {
  const auto re = static_cast<float>(i);
  const auto im = static_cast<float>(q);
  return static_cast<std::uint16_t>(std::sqrt(re * re + im * im));
}

inline std::uint16_t plain_phase(std::int16_t i, std::int16_t q) {
  if (q == 0 || i == 0) return 0;
  const auto angle = static_cast<float>(std::atan2(static_cast<double>(q), static_cast<double>(i)));
  return static_cast<std::uint16_t>(
      static_cast<std::int32_t>(static_cast<double>(angle) * 10430.3783505));
}
