#include "image/conversion.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <vector>

namespace {

std::uint16_t magnitude(std::int16_t i, std::int16_t q) {
  std::uint16_t pixel = 0;
  tsx_ConvertMagnitude(&i, &q, &pixel, 1);
  return pixel;
}

std::int16_t phase(std::int16_t i, std::int16_t q) {
  std::uint16_t pixel = 0;
  tsx_ConvertPhase(&i, &q, &pixel, 1);
  return static_cast<std::int16_t>(pixel);
}

TEST(Magnitude, IsTheTruncatedModulus) {
  EXPECT_EQ(magnitude(3, 4), 5);
  EXPECT_EQ(magnitude(1, 1), 1) << "1.41 truncated";
  EXPECT_EQ(magnitude(0, 0), 0);
  EXPECT_EQ(magnitude(-32768, -32768), 46340) << "32768 x sqrt 2 = 46340.95";
  EXPECT_EQ(magnitude(-32768, 0), 32768);
}

// Squares and sum round to 24 bits: 4097 x 4097 = 16785409 becomes 16785408, and so on. The pixel
// is that of the rounded sum, also where exact arithmetic gives another.
TEST(Magnitude, RoundsSquaresAndSumToSinglePrecision) {
  int differing = 0;
  for (std::int32_t i = 30000; i < 30400; ++i) {
    for (std::int32_t q = 30000; q < 30400; ++q) {
      volatile float ii = static_cast<float>(i) * static_cast<float>(i);
      volatile float qq = static_cast<float>(q) * static_cast<float>(q);
      volatile float sum = ii + qq;
      const auto expected = static_cast<std::uint16_t>(std::sqrt(sum));
      ASSERT_EQ(magnitude(static_cast<std::int16_t>(i), static_cast<std::int16_t>(q)), expected)
          << i << ' ' << q;
      const double exact = std::sqrt(static_cast<double>(i) * i + static_cast<double>(q) * q);
      differing += static_cast<std::uint16_t>(exact) != expected ? 1 : 0;
    }
  }
  EXPECT_GT(differing, 0) << "the range must hold pairs that tell the two apart";
}

TEST(Phase, SpansTheSixteenBitsOverATurn) {
  EXPECT_EQ(phase(1, 1), 8192) << "an eighth of 65536";
  EXPECT_EQ(phase(-1, -1), -24576) << "minus three eighths";
  EXPECT_EQ(phase(-1, 1), 24576);
  EXPECT_EQ(phase(1, -1), -8192);
}

TEST(Phase, OfBothAxesIsZero) {
  EXPECT_EQ(phase(0, 5), 0);
  EXPECT_EQ(phase(5, 0), 0);
  EXPECT_EQ(phase(-5, 0), 0) << "half a turn, told as 0 on purpose";
  EXPECT_EQ(phase(0, 0), 0);
}

// The angle is rounded to single precision before it is scaled, and the product is a double. The
// angle of (-3000, -2513) is -2.4443024444, or -25494.9993 steps; rounded to single precision it
// passes -25495. A product in single precision would give (-2996, -2431) the pixel -25657.
TEST(Phase, RoundsTheAngleAndNotTheProduct) {
  EXPECT_EQ(phase(-3000, -2513), -25495);
  EXPECT_EQ(phase(-3000, -1804), -27120);
  EXPECT_EQ(phase(-2996, -2431), -25658);
  EXPECT_EQ(phase(-2996, 2431), 25658);
}

// The angle nearest to half a turn is pi - 1/32768, which is 32768 - 0.318 steps.
TEST(Phase, ComesNearestToHalfATurnBesideTheAxis) {
  EXPECT_EQ(phase(-32768, 1), 32767);
  EXPECT_EQ(phase(-32768, -1), -32767);
}

TEST(Narrowing, TruncatesAndKeepsTheLowBits) {
  const std::vector<double> values = {65535.0, 70000.9, 0.99, -1.5, 1e300, std::nan(""), -1e300};
  gkl_PixelRect rect{const_cast<double*>(values.data()), 56, 8, 7, 1, gkl_PixelF64};
  std::vector<std::uint16_t> pixels(7, 7);
  tsx_NarrowPixels(rect, 7, 1, pixels.data());
  EXPECT_EQ(pixels[0], 65535);
  EXPECT_EQ(pixels[1], 4464) << "70000 - 65536";
  EXPECT_EQ(pixels[2], 0);
  EXPECT_EQ(pixels[3], 65535) << "-1 in 16 bits";
  EXPECT_EQ(pixels[4], 0) << "no integer of 64 bits";
  EXPECT_EQ(pixels[5], 0);
  EXPECT_EQ(pixels[6], 0);
}

}  // namespace
