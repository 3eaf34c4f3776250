#pragma once

#include <cstdint>

namespace simulate {

// A bijective mix of 64 bits: counters in, independent bits out (the finaliser of splitmix64).
constexpr std::uint64_t random_bits(std::uint64_t x) {
  x += 0x9E3779B97F4A7C15U;
  x = (x ^ (x >> 30U)) * 0xBF58476D1CE4E5B9U;
  x = (x ^ (x >> 27U)) * 0x94D049BB133111EBU;
  return x ^ (x >> 31U);
}

// In (0, 1].
constexpr double uniform(std::uint64_t bits) {
  return (static_cast<double>(bits >> 11U) + 1) * 0x1p-53;
}

}  // namespace simulate
