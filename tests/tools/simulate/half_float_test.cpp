#include "tools/simulate/half_float.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

using simulate::half_bits;

// What the 16 bits of a half say: a sign, five bits of exponent and ten of mantissa.
double value_of(unsigned bits) {
  const int exponent = static_cast<int>(bits >> 10U & 31U);
  const double mantissa = bits & 1023U;
  const double magnitude =
      exponent == 0 ? std::ldexp(mantissa, -24) : std::ldexp(1024 + mantissa, exponent - 15 - 10);
  return (bits & 0x8000U) != 0 ? -magnitude : magnitude;
}

constexpr unsigned largest = 0x7BFF;

TEST(HalfFloat, EveryHalfGivesItself) {
  for (unsigned magnitude = 0; magnitude <= largest; ++magnitude) {
    for (const unsigned sign : {0U, 0x8000U}) {
      const unsigned bits = sign | magnitude;
      ASSERT_EQ(half_bits(static_cast<float>(value_of(bits))), bits);
    }
  }
}

// Every midpoint of two neighbours is a float.
TEST(HalfFloat, WhatLiesBetweenGivesTheNearerAndTheMidpointTheEvenOne) {
  for (unsigned below = 0; below < largest; ++below) {
    const auto middle = static_cast<float>((value_of(below) + value_of(below + 1)) / 2);
    ASSERT_EQ(half_bits(middle), below + (below & 1U)) << below;
    ASSERT_EQ(half_bits(std::nextafter(middle, 0.0F)), below);
    ASSERT_EQ(half_bits(std::nextafter(middle, 70000.0F)), below + 1);
    ASSERT_EQ(half_bits(-middle), 0x8000U | (below + (below & 1U)));
  }
}

TEST(HalfFloat, TheSmallestFloatsGiveZero) {
  EXPECT_EQ(half_bits(std::numeric_limits<float>::denorm_min()), 0);
  EXPECT_EQ(half_bits(-std::numeric_limits<float>::min()), 0x8000);
}

}  // namespace
