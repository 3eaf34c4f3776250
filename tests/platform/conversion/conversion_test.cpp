#include "conversion/conversion.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstring>
#include <limits>
#include <numeric>
#include <random>
#include <string>
#include <vector>

#include "conversion/kernels.h"
#include "support/plain_conversion.h"

namespace {

std::uint16_t magnitude(std::int16_t i, std::int16_t q) {
  std::uint16_t pixel = 0;
  conversion::magnitude(&i, &q, &pixel, 1);
  return pixel;
}

std::int16_t phase(std::int16_t i, std::int16_t q) {
  std::uint16_t pixel = 0;
  conversion::phase(&i, &q, &pixel, 1);
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

class Kernels : public testing::TestWithParam<const conversion::Kernels*> {};

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
    GetParam()->split_big_endian(line.data(), i.data(), q.data(), count);
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
  GetParam()->split_big_endian(line, i, q, 2);
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

TEST_P(Kernels, SplitSamplesOfThisMachine) {
  const std::int16_t samples[] = {1, -2, 32767, -32768, 5, 6};
  std::int16_t i[3];
  std::int16_t q[3];
  GetParam()->split(samples, i, q, 3);
  EXPECT_THAT(i, testing::ElementsAre(1, 32767, 5));
  EXPECT_THAT(q, testing::ElementsAre(-2, -32768, 6));
}

TEST_P(Kernels, TurnBigEndianValuesRoundWhereTheyStand) {
  std::vector<std::uint16_t> values(99);
  auto* bytes = reinterpret_cast<unsigned char*>(values.data());
  for (unsigned k = 0; k < 198; ++k) bytes[k] = static_cast<unsigned char>(k);
  GetParam()->from_big_endian(values.data(), 98);
  for (unsigned k = 0; k < 98; ++k) ASSERT_EQ(values[k], 256 * (2 * k) + 2 * k + 1) << k;
  EXPECT_EQ(bytes[196], 196) << "what follows stays";
}

TEST_P(Kernels, WidenEveryInteger) {
  std::vector<std::int16_t> integers(65536);
  std::iota(integers.begin(), integers.end(), std::int16_t{-32768});
  std::vector<std::uint16_t> pixels(65536);
  std::iota(pixels.begin(), pixels.end(), std::uint16_t{0});
  std::vector<float> floats(65536);
  GetParam()->widen_integers(integers.data(), floats.data(), 65536);
  for (int k = 0; k < 65536; ++k) {
    ASSERT_EQ(floats[static_cast<std::size_t>(k)], static_cast<float>(k - 32768));
  }
  GetParam()->widen_pixels(pixels.data(), floats.data(), 65536);
  for (int k = 0; k < 65536; ++k) {
    ASSERT_EQ(floats[static_cast<std::size_t>(k)], static_cast<float>(k));
  }
}

// A half is a sign, 5 bits of exponent and 10 of fraction.
float plain_half(std::uint16_t bits) {
  const int exponent = bits >> 10 & 31;
  const int fraction = bits & 1023;
  const float sign = bits >> 15 != 0 ? -1.0F : 1.0F;
  if (exponent == 31) {
    return fraction != 0 ? std::numeric_limits<float>::quiet_NaN()
                         : sign * std::numeric_limits<float>::infinity();
  }
  return exponent == 0 ? sign * std::ldexp(static_cast<float>(fraction), -24)
                       : sign * std::ldexp(static_cast<float>(1024 + fraction), exponent - 25);
}

TEST_P(Kernels, WidenEveryHalf) {
  std::vector<std::uint16_t> halves(65536);
  std::iota(halves.begin(), halves.end(), std::uint16_t{0});
  std::vector<float> floats(65536);
  GetParam()->widen_halves(halves.data(), floats.data(), 65536);
  for (std::size_t k = 0; k < 65536; ++k) {
    const float expected = plain_half(halves[k]);
    if (std::isnan(expected)) {
      ASSERT_TRUE(std::isnan(floats[k])) << k;
    } else {
      ASSERT_EQ(floats[k], expected) << k;
      ASSERT_EQ(std::signbit(floats[k]), std::signbit(expected)) << k;
    }
  }
}

// Samples as the numbers that they are widened to, with some that no 16-bit integer gives.
struct FloatSamples {
  std::vector<float> values;

  FloatSamples() {
    const Samples integers;
    for (std::size_t k = 0; k < integers.i.size(); ++k) {
      values.push_back(integers.i[k]);
      values.push_back(integers.q[k]);
    }
    std::mt19937 random(11);
    std::uniform_real_distribution<float> exponent(-14, 16);
    std::uniform_real_distribution<float> sign(-1, 1);
    for (int k = 0; k < 200000; ++k) {
      values.push_back(std::copysign(std::exp2(exponent(random)), sign(random)));
    }
  }
  std::size_t count() const { return values.size() / 2; }
};

TEST_P(Kernels, GiveModuliOfRoundedSquaresAndSum) {
  const FloatSamples samples;
  std::vector<float> moduli(samples.count());
  GetParam()->moduli(samples.values.data(), moduli.data(), samples.count());
  for (std::size_t k = 0; k < samples.count(); ++k) {
    const float re = samples.values[2 * k];
    const float im = samples.values[2 * k + 1];
    ASSERT_EQ(moduli[k], std::sqrt(re * re + im * im)) << re << ' ' << im;
  }
}

// Steps between two numbers of one sign.
std::int64_t steps_between(float a, float b) {
  return std::abs(std::int64_t{std::bit_cast<std::int32_t>(a)} - std::bit_cast<std::int32_t>(b));
}

TEST_P(Kernels, GiveAnglesWithinOneStepOfThePlainFormula) {
  const FloatSamples samples;
  std::vector<float> angles(samples.count());
  GetParam()->angles(samples.values.data(), angles.data(), samples.count());
  for (std::size_t k = 0; k < samples.count(); ++k) {
    const double re = samples.values[2 * k];
    const double im = samples.values[2 * k + 1];
    const auto plain = static_cast<float>(std::atan2(im, re));
    ASSERT_LE(steps_between(angles[k], plain), 1) << re << ' ' << im << ": " << angles[k];
  }
}

TEST_P(Kernels, GiveAnglesOfTheAxesAndOfWhatIsNoNumber) {
  const float infinity = std::numeric_limits<float>::infinity();
  const float nan = std::numeric_limits<float>::quiet_NaN();
  const float pi = 3.14159274F;
  struct {
    float i, q, angle;
  } const cases[] = {
      {0, 0, 0},        {5, 0, 0},     {-5, 0, pi},   {-5, -0.0F, pi}, {0, 5, pi / 2},
      {0, -5, -pi / 2}, {-0.0F, 0, 0}, {nan, 1, nan}, {1, nan, nan},   {infinity, infinity, nan}};
  for (const auto& [i, q, angle] : cases) {
    const float sample[] = {i, q};
    float given = 7;
    GetParam()->angles(sample, &given, 1);
    if (std::isnan(angle)) {
      EXPECT_TRUE(std::isnan(given)) << i << ' ' << q;
    } else {
      EXPECT_EQ(given, angle) << i << ' ' << q;
    }
  }
}

TEST_P(Kernels, GivePowersExactly) {
  const Samples samples;
  const FloatSamples floats;
  std::vector<double> powers(samples.i.size());
  GetParam()->powers(floats.values.data(), powers.data(), powers.size());
  std::vector<double> squares(samples.i.size());
  GetParam()->squares(floats.values.data(), squares.data(), squares.size());
  for (std::size_t k = 0; k < powers.size(); ++k) {
    const std::int64_t i = samples.i[k];
    const std::int64_t q = samples.q[k];
    ASSERT_EQ(powers[k], static_cast<double>(i * i + q * q)) << i << ' ' << q;
    const auto value = static_cast<std::int64_t>(floats.values[k]);
    ASSERT_EQ(squares[k], static_cast<double>(value * value)) << value;
  }
}

TEST_P(Kernels, ScaleAndTakeDecibelsAsThePlainFormulas) {
  const double factor = 1.0574e-5;
  std::vector<double> powers;
  for (int k = 0; k < 100000; ++k) powers.push_back(k * 21474.0 + k % 7);
  for (int k = 1; k < 3000; ++k) powers.push_back((1 + k * 1e-6) / factor);
  std::vector<float> scaled(powers.size());
  std::vector<float> decibels(powers.size());
  GetParam()->scale(powers.data(), factor, scaled.data(), powers.size());
  GetParam()->decibels(powers.data(), factor, decibels.data(), powers.size());
  EXPECT_EQ(decibels[0], -std::numeric_limits<float>::infinity());
  for (std::size_t k = 0; k < powers.size(); ++k) {
    const double brightness = factor * powers[k];
    ASSERT_EQ(scaled[k], static_cast<float>(brightness)) << powers[k];
    if (k == 0) continue;
    const auto plain = static_cast<float>(10 * std::log10(brightness));
    ASSERT_LE(steps_between(decibels[k], plain), 1) << powers[k] << ": " << decibels[k];
  }
}

TEST_P(Kernels, TakeDecibelsOfPowersOfTenAndOfWhatHasNone) {
  const double infinity = std::numeric_limits<double>::infinity();
  const std::vector<double> powers = {1, 10, 100, 1e-30, 1e300, infinity, -1, std::nan("")};
  std::vector<float> decibels(powers.size());
  GetParam()->decibels(powers.data(), 1, decibels.data(), powers.size());
  EXPECT_EQ(decibels[0], 0);
  EXPECT_EQ(decibels[1], 10);
  EXPECT_EQ(decibels[2], 20);
  EXPECT_EQ(decibels[3], -300);
  EXPECT_EQ(decibels[4], 3000);
  EXPECT_EQ(decibels[5], infinity);
  EXPECT_TRUE(std::isnan(decibels[6]));
  EXPECT_TRUE(std::isnan(decibels[7]));
}

TEST_P(Kernels, WeighPowersAsThePlainFormula) {
  constexpr std::size_t count = 1027;
  std::vector<double> powers(count);
  std::vector<double> noise(count);
  std::vector<double> gains(count);
  for (std::size_t k = 0; k < count; ++k) {
    powers[k] = static_cast<double>(k * k);
    noise[k] = 0.3 + static_cast<double>(k) / 7;
    gains[k] = 0.5 + static_cast<double>(k % 13) / 100;
  }
  std::vector<double> weighed(count);
  GetParam()->weigh(powers.data(), 1.1e-3, noise.data(), gains.data(), weighed.data(), count);
  for (std::size_t k = 0; k < count; ++k) {
    volatile double power = powers[k] * 1.1e-3;
    volatile double left = power - noise[k];
    ASSERT_EQ(weighed[k], left * gains[k]) << k;
  }
}

TEST_P(Kernels, RampAndBlend) {
  constexpr std::size_t count = 1027;
  std::vector<double> ramp(count);
  GetParam()->ramp(0.7, -1.3e-4, ramp.data(), count);
  const std::vector<double> flat(count, 2.0);
  std::vector<double> blended(count);
  GetParam()->blend(ramp.data(), flat.data(), 0.25, blended.data(), count);
  for (std::size_t k = 0; k < count; ++k) {
    volatile double product = -1.3e-4 * static_cast<double>(k);
    const double value = 0.7 + product;
    ASSERT_EQ(ramp[k], value) << k;
    volatile double share = 0.25 * (2.0 - value);
    ASSERT_EQ(blended[k], value + share) << k;
  }
}

INSTANTIATE_TEST_SUITE_P(Conversion, Kernels, testing::ValuesIn(conversion::available_kernels()),
                         [](const auto& set) {
                           std::string name = set.param->name;
                           std::erase(name, '-');
                           return name;
                         });

}  // namespace
