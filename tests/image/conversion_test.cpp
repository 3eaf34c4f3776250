#include "image/conversion.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "image/conversion_kernels.h"
#include "support/plain_conversion.h"

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

TEST(Narrowing, FollowsBothStrides) {
  // Two lines of two pixels, every other value, a value between the lines.
  const std::vector<double> values = {1, -9, 2, -9, -9, 3, -9, 4, -9};
  gkl_PixelRect rect{const_cast<double*>(values.data()), 40, 16, 2, 2, gkl_PixelF64};
  std::vector<std::uint16_t> pixels(4);
  tsx_NarrowPixels(rect, 2, 2, pixels.data());
  EXPECT_EQ(pixels, (std::vector<std::uint16_t>{1, 2, 3, 4}));
}

// The pairs at which conversions go wrong first, and a million others; all pairs are the business
// of bench/prove_conversions.cpp.
struct Samples {
  std::vector<std::int16_t> i;
  std::vector<std::int16_t> q;

  Samples() {
    for (int value = -32768; value <= 32767; ++value) {
      add(value, 0);
      add(0, value);
      add(value, value);
      add(value, -value);
    }
    const int extremes[] = {-32768, -32767, -16384, -181, -3, -2, -1, 1, 2, 3, 181, 16384, 32767};
    for (const int a : extremes) {
      for (const int b : extremes) add(a, b);
    }
    // The angle of (-19529, 17861) comes closest to a place where the pixel changes: 2.18e-14 rad.
    for (int a = -16; a <= 16; ++a) {
      for (int b = -16; b <= 16; ++b) add(-19529 + a, 17861 + b);
    }
    std::mt19937 random(7);
    for (int k = 0; k < 1 << 20; ++k) {
      const auto both = static_cast<std::uint32_t>(random());
      add(static_cast<std::int16_t>(both), static_cast<std::int16_t>(both >> 16));
    }
  }
  void add(int a, int b) {
    i.push_back(static_cast<std::int16_t>(a));
    q.push_back(static_cast<std::int16_t>(b));
  }
};

class Kernels : public testing::TestWithParam<const ConversionKernels*> {};

TEST_P(Kernels, GiveTheBitsOfThePlainSequences) {
  const Samples samples;
  const std::size_t count = samples.i.size();
  std::vector<std::uint16_t> magnitudes(count);
  std::vector<std::uint16_t> phases(count);
  GetParam()->magnitude(samples.i.data(), samples.q.data(), magnitudes.data(), count);
  GetParam()->phase(samples.i.data(), samples.q.data(), phases.data(), count);
  for (std::size_t k = 0; k < count; ++k) {
    ASSERT_EQ(magnitudes[k], plain_magnitude(samples.i[k], samples.q[k]))
        << samples.i[k] << ' ' << samples.q[k];
    ASSERT_EQ(phases[k], plain_phase(samples.i[k], samples.q[k]))
        << samples.i[k] << ' ' << samples.q[k];
  }
}

// Vectors end somewhere: any count, also around the 1024 samples that are worked on at a time.
TEST_P(Kernels, ConvertAsManyAsTheyAreTold) {
  std::vector<std::int16_t> line;
  for (int k = 0; k < 2200; ++k) line.push_back(static_cast<std::int16_t>(k * 31 - 20000));
  for (std::size_t count = 0; count <= 1100; count += count < 140 || count > 1010 ? 1 : 29) {
    std::vector<std::int16_t> i(count + 1, 777);
    std::vector<std::int16_t> q(count + 1, 777);
    GetParam()->split(line.data(), i.data(), q.data(), count);
    std::vector<std::uint16_t> magnitudes(count + 1, 777);
    std::vector<std::uint16_t> phases(count + 1, 777);
    GetParam()->magnitude(i.data(), q.data(), magnitudes.data(), count);
    GetParam()->phase(i.data(), q.data(), phases.data(), count);
    for (std::size_t k = 0; k < count; ++k) {
      ASSERT_EQ(magnitudes[k], plain_magnitude(i[k], q[k])) << k << " of " << count;
      ASSERT_EQ(phases[k], plain_phase(i[k], q[k])) << k << " of " << count;
    }
    ASSERT_EQ(i[count], 777);
    ASSERT_EQ(q[count], 777);
    ASSERT_EQ(magnitudes[count], 777);
    ASSERT_EQ(phases[count], 777);
  }
}

TEST_P(Kernels, SplitBigEndianPairs) {
  const unsigned char bytes[] = {0x12, 0x34, 0xFE, 0xDC, 0x80, 0x00, 0x00, 0x01};
  std::int16_t line[4];
  std::memcpy(line, bytes, sizeof line);
  std::int16_t i[2];
  std::int16_t q[2];
  GetParam()->split(line, i, q, 2);
  EXPECT_EQ(i[0], 0x1234);
  EXPECT_EQ(q[0], -0x0124) << "0xFEDC";
  EXPECT_EQ(i[1], -32768);
  EXPECT_EQ(q[1], 1);
}

TEST_P(Kernels, NarrowEveryValueOfSixteenBits) {
  std::vector<double> values;
  for (int value = -65536; value < 65536; ++value) values.push_back(value + (value < 0 ? -.5 : .5));
  std::vector<std::uint16_t> pixels(values.size());
  GetParam()->narrow(values.data(), pixels.data(), values.size());
  for (int k = 0; k < 131072; ++k) {
    ASSERT_EQ(pixels[static_cast<std::size_t>(k)], static_cast<std::uint16_t>(k)) << values[0] + k;
  }
}

// A value beyond 32 bits among others that are not, at any place.
TEST_P(Kernels, NarrowWhatIsBeyond32Bits) {
  struct {
    double value;
    std::uint16_t pixel;
  } const cases[] = {{2147483647.9, 65535},
                     {2147483648.0, 0},
                     {2147483649.0, 1},
                     {-2147483648.0, 0},
                     {-2147483649.0, 65535},
                     {4294967296.0 * 65536 + 5, 5},
                     {9223372036854775808.0, 0},
                     {-9223372036854775808.0, 0},
                     {std::numeric_limits<double>::infinity(), 0},
                     {-std::numeric_limits<double>::infinity(), 0},
                     {std::nan(""), 0},
                     {-std::nan(""), 0},
                     {-0.0, 0},
                     {5e-324, 0}};
  const std::size_t places[] = {0, 1, 30, 31, 32, 33, 1023, 1024, 1025, 1999};
  for (const auto& [value, pixel] : cases) {
    for (const std::size_t at : places) {
      std::vector<double> values(2000, 3.7);
      values[at] = value;
      std::vector<std::uint16_t> expected(2000, 3);
      expected[at] = pixel;
      std::vector<std::uint16_t> pixels(2000);
      GetParam()->narrow(values.data(), pixels.data(), 2000);
      ASSERT_EQ(pixels, expected) << value << " at " << at;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Conversion, Kernels, testing::ValuesIn(tsx_ConversionKernels()),
                         [](const auto& set) {
                           std::string name = set.param->name;
                           std::erase(name, '-');
                           return name;
                         });

}  // namespace
