#include "gridkit/radiometry.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "gridkit/error.h"

namespace {

using gridkit::Backscatter;
using gridkit::NoisePolynomial;
using gridkit::NoiseRecord;
using gridkit::RadiometricLines;
using gridkit::Radiometry;

constexpr std::int64_t lines = 61;
constexpr std::int64_t samples = 2500;  // more than are weighed at once
constexpr double factor = 1.0574e-5;

// Angles from 30 to about 33 degrees that bend over both axes, and change their slope at a knot.
class CurvedAngles final : public gridkit::Incidence {
 public:
  double at(double line, double sample) const override {
    const double x = sample / samples;
    const double y = line / lines;
    const double bend = sample > knot ? (sample - knot) * 1e-6 : 0;
    return 0.5236 + 0.05 * x - 0.004 * x * x + 0.001 * y * (1 + x) - 0.0002 * y * y + bend;
  }
  std::vector<double> sample_knots() const override { return {-300, knot, 4000}; }
  std::string source() const override { return "a formula"; }

  static constexpr double knot = 1111.25;
};

Radiometry::Parts parts_of(Backscatter quantity) {
  Radiometry::Parts parts;
  parts.quantity = quantity;
  parts.factor = factor;
  parts.lines = lines;
  parts.samples = samples;
  if (quantity != Backscatter::beta0) parts.incidence = std::make_shared<const CurvedAngles>();
  return parts;
}

// Three records at 100, 101 and 103 s, of which the last has two polynomials that share the range.
gridkit::ImageNoise noise() {
  gridkit::ImageNoise result;
  result.factor = factor;
  result.records = {{100, {{4e-3, 4.1e-3, 4.05e-3, {300, 5e5, 2e11, -4e14}}}},
                    {101, {{4e-3, 4.1e-3, 4.05e-3, {330, -5e5, 3e11, 1e14}}}},
                    {103, {{4e-3, 4.01e-3, 4.005e-3, {350, 1e5}}, {4.01e-3, 4.1e-3, 4e-3, {340}}}}};
  return result;
}

// Lines from 99 s on, a tenth of a second apart; samples 8 ns apart from 4 ms on.
gridkit::RasterTimes times() {
  return {99, 0.1, [](double sample) { return 4e-3 + sample * 8e-9; }};
}

double noise_at(double line, double sample) {
  const auto records = noise().records;
  const double time = 99 + 0.1 * line;
  const double range = 4e-3 + sample * 8e-9;
  if (time <= 100) return factor * records[0].at(range);
  if (time >= 103) return factor * records[2].at(range);
  const std::size_t r = time < 101 ? 0 : 1;
  const double from = records[r].azimuth_time;
  const double share = (time - from) / (records[r + 1].azimuth_time - from);
  return factor * ((1 - share) * records[r].at(range) + share * records[r + 1].at(range));
}

// Of a pixel whose power is its line times 1000 and its sample.
double power_of(std::int64_t line, std::int64_t sample) {
  return static_cast<double>(line * 1000 + sample);
}

double expected(Backscatter quantity, bool with_noise, std::int64_t line, std::int64_t sample) {
  const auto l = static_cast<double>(line);
  const auto s = static_cast<double>(sample);
  const double left = factor * power_of(line, sample) - (with_noise ? noise_at(l, s) : 0);
  const double angle = CurvedAngles().at(l, s);
  if (quantity == Backscatter::sigma0) return left * std::sin(angle);
  return quantity == Backscatter::gamma0 ? left * std::tan(angle) : left;
}

void expect_lines(Backscatter quantity, bool with_noise, std::int64_t first, std::int64_t step) {
  Radiometry::Parts parts = parts_of(quantity);
  if (with_noise) {
    parts.noise = noise();
    parts.times = times();
  }
  const auto radiometry = std::make_shared<const Radiometry>(std::move(parts));
  RadiometricLines weighing(radiometry, first, step);
  const auto count = static_cast<std::size_t>((samples - 1 - first) / step + 1);
  std::vector<double> powers(count);
  std::vector<double> values(count);
  for (std::int64_t line = 0; line < lines; ++line) {
    for (std::size_t k = 0; k < count; ++k) {
      powers[k] = power_of(line, first + static_cast<std::int64_t>(k) * step);
    }
    weighing.weigh(line, 0, powers, values);
    for (std::size_t k = 0; k < count; ++k) {
      const std::int64_t sample = first + static_cast<std::int64_t>(k) * step;
      const double wanted = expected(quantity, with_noise, line, sample);
      // The angle's share is within the stated precision, between halfway points a little more.
      ASSERT_NEAR(values[k], wanted, std::abs(wanted) * 1.2e-7 + 1e-18) << line << ' ' << sample;
    }
  }
}

TEST(Radiometry, GivesEveryQuantityWithAndWithoutNoise) {
  for (const Backscatter quantity :
       {Backscatter::beta0, Backscatter::sigma0, Backscatter::gamma0}) {
    for (const bool with_noise : {false, true}) {
      SCOPED_TRACE(gridkit::formula_of(quantity, with_noise, false));
      ASSERT_NO_FATAL_FAILURE(expect_lines(quantity, with_noise, 0, 1));
      ASSERT_NO_FATAL_FAILURE(expect_lines(quantity, with_noise, 1100, 7));
      ASSERT_NO_FATAL_FAILURE(expect_lines(quantity, with_noise, 2499, 1));
    }
  }
}

TEST(Radiometry, GoesOnInTheMiddleOfALine) {
  const auto radiometry = std::make_shared<const Radiometry>(parts_of(Backscatter::sigma0));
  RadiometricLines weighing(radiometry, 10, 3);
  const std::vector<double> powers = {power_of(5, 10 + 3 * 400), power_of(5, 10 + 3 * 401)};
  std::vector<double> values(2);
  weighing.weigh(5, 400, powers, values);
  EXPECT_NEAR(values[0] / expected(Backscatter::sigma0, false, 5, 1210), 1, 1.2e-7);
  EXPECT_NEAR(values[1] / expected(Backscatter::sigma0, false, 5, 1213), 1, 1.2e-7);
}

TEST(Radiometry, KeepsNegativePowersAndGivesThemNoDecibels) {
  Radiometry::Parts parts = parts_of(Backscatter::beta0);
  parts.noise = gridkit::ImageNoise{factor, {{0, {{0, 1, 0, {100}}}}}};
  parts.times = times();
  RadiometricLines weighing(std::make_shared<const Radiometry>(std::move(parts)));
  const std::vector<std::uint16_t> amplitudes = {0, 10, 20};  // below, at and above the noise
  std::vector<float> values(3);
  weighing.weigh(0, 0, amplitudes, false, values);
  EXPECT_FLOAT_EQ(values[0], static_cast<float>(-100 * factor));
  EXPECT_EQ(values[1], 0);
  EXPECT_FLOAT_EQ(values[2], static_cast<float>(300 * factor));
  weighing.weigh(0, 0, amplitudes, true, values);
  EXPECT_TRUE(std::isnan(values[0]));
  EXPECT_EQ(values[1], -std::numeric_limits<float>::infinity());
  EXPECT_FLOAT_EQ(values[2], static_cast<float>(10 * std::log10(300 * factor)));
}

TEST(Radiometry, TakesAnImageOfOnePixel) {
  Radiometry::Parts parts = parts_of(Backscatter::gamma0);
  parts.lines = parts.samples = 1;
  RadiometricLines weighing(std::make_shared<const Radiometry>(std::move(parts)));
  std::vector<double> values(1);
  weighing.weigh(0, 0, std::vector<double>{4}, values);
  EXPECT_DOUBLE_EQ(values[0], factor * 4 * std::tan(0.5236));
}

TEST(Noise, IsHeldBeyondItsRange) {
  const NoisePolynomial polynomial = {1, 3, 2, {10, 5}};
  EXPECT_EQ(polynomial.at(2.5), 12.5);
  EXPECT_EQ(polynomial.at(0), 5);
  EXPECT_EQ(polynomial.at(9), 15);
}

TEST(Noise, IsThatOfThePolynomialWhoseRangeIsNearest) {
  const NoiseRecord record = {0, {{1, 2, 0, {10}}, {4, 5, 0, {20}}}};
  EXPECT_EQ(record.at(1.5), 10);
  EXPECT_EQ(record.at(2.9), 10);
  EXPECT_EQ(record.at(3.1), 20);
  EXPECT_EQ(record.at(7), 20);
}

TEST(Radiometry, TellsItsFormulas) {
  using gridkit::formula_of;
  EXPECT_EQ(formula_of(Backscatter::beta0, false, false), "beta0 = calFactor * DN^2");
  EXPECT_EQ(formula_of(Backscatter::beta0, false, true), "beta0 = 10 * log10(calFactor * DN^2)");
  EXPECT_EQ(formula_of(Backscatter::beta0, true, false), "beta0 = calFactor * DN^2 - noise");
  EXPECT_EQ(formula_of(Backscatter::sigma0, false, false),
            "sigma0 = calFactor * DN^2 * sin(incidence)");
  EXPECT_EQ(formula_of(Backscatter::gamma0, true, true),
            "gamma0 = 10 * log10((calFactor * DN^2 - noise) * tan(incidence))");
}

std::string refusal_of(Radiometry::Parts parts) {
  try {
    const Radiometry radiometry(std::move(parts));
  } catch (const gridkit::Error& error) {
    return error.what();
  }
  return {};
}

// Angles that no mesh follows.
class NoisyAngles final : public gridkit::Incidence {
 public:
  double at(double line, double sample) const override {
    return 0.6 + 0.1 * std::sin(1e6 * (line + sample * sample));
  }
  std::string source() const override { return "chance"; }
};

class GrazingAngles final : public gridkit::Incidence {
 public:
  double at(double, double) const override { return 0; }
  std::string source() const override { return "zero"; }
};

TEST(Radiometry, RefusesPartsThatDoNotServe) {
  Radiometry::Parts parts = parts_of(Backscatter::beta0);
  parts.factor = 0;
  EXPECT_EQ(refusal_of(parts), "the calibration factor is not a positive number");
  parts = parts_of(Backscatter::sigma0);
  parts.incidence = nullptr;
  EXPECT_EQ(refusal_of(parts), "the angles of incidence are not known, which sigma0 takes");
  parts.incidence = std::make_shared<const NoisyAngles>();
  EXPECT_EQ(refusal_of(parts), "the angles of incidence change too abruptly to be interpolated");
  parts.incidence = std::make_shared<const GrazingAngles>();
  EXPECT_EQ(refusal_of(parts), "an angle of incidence is not between 0 and 90 degrees");
  parts = parts_of(Backscatter::beta0);
  parts.times = times();
  parts.noise = noise();
  std::swap(parts.noise->records[0], parts.noise->records[1]);
  EXPECT_EQ(refusal_of(parts), "the records of noise are not in the order of their azimuth times");
  parts.noise->records.clear();
  EXPECT_EQ(refusal_of(parts), "there is no record of noise");
  parts.noise->records = {{0, {{0, 1, 0, {std::numeric_limits<double>::infinity()}}}}};
  EXPECT_EQ(refusal_of(parts), "a record of noise gives no finite number");
  parts.samples = gridkit::most_noise_values + 1;
  EXPECT_EQ(refusal_of(parts), "there are 1 records of noise for " + std::to_string(parts.samples) +
                                   " samples, too many to be kept");
}

}  // namespace
