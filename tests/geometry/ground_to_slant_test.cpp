#include "geometry/ground_to_slant.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "support/fake_document.h"

namespace {

constexpr double c = 299792458.0;
constexpr int terms = 6;

// Slant range over ground range by Householder reflections on columns scaled to the far point, in
// extended precision: another road to the same fit.
std::array<double, terms> fitted(const std::vector<double>& polynomial, double spacing,
                                 int columns) {
  using real = long double;
  constexpr int rows = 10;
  real a[rows][terms + 1];
  real far = 0;
  for (int pass = 0; pass < 2; ++pass) {
    for (int k = 0; k < rows; ++k) {
      const real d = static_cast<real>(k * 1000 * spacing / c * 2.0);
      real ground = 0;
      for (std::size_t i = polynomial.size(); i-- > 0;) ground = ground * d + polynomial[i];
      if (pass == 0) far = std::max(far, std::fabs(ground));
      if (pass == 0) continue;
      for (int j = 0; j < columns; ++j) a[k][j] = std::pow(ground / far, j);
      a[k][columns] = d * static_cast<real>(c) / 2;
    }
  }
  for (int j = 0; j < columns; ++j) {
    real norm = 0;
    for (int k = j; k < rows; ++k) norm += a[k][j] * a[k][j];
    norm = a[j][j] > 0 ? -std::sqrt(norm) : std::sqrt(norm);
    real v[rows] = {};
    real length = 0;
    for (int k = j; k < rows; ++k) {
      v[k] = a[k][j] - (k == j ? norm : 0);
      length += v[k] * v[k];
    }
    for (int m = j; m <= columns; ++m) {
      real dot = 0;
      for (int k = j; k < rows; ++k) dot += v[k] * a[k][m];
      for (int k = j; k < rows; ++k) a[k][m] -= 2 * dot / length * v[k];
    }
  }
  std::array<double, terms> result{};
  for (int j = columns - 1; j >= 0; --j) {
    real x = a[j][columns];
    for (int m = j + 1; m < columns; ++m) {
      x -= a[j][m] * static_cast<real>(result[static_cast<std::size_t>(m)]);
    }
    result[static_cast<std::size_t>(j)] = static_cast<double>(x / a[j][j]);
  }
  for (int j = 0; j < columns; ++j) {
    result[static_cast<std::size_t>(j)] /= static_cast<double>(std::pow(far, j));
  }
  return result;
}

class GroundToSlant : public testing::Test {
 protected:
  void SetUp() override {
    document.variant = "MGD";
    document.slant_range_spacing = 1.5F;
    // Ground range of a scene 35 degrees off nadir, in metres by powers of seconds.
    document.polynomial = {0.0, 2.6e8, -4.9e11, 1.9e15, -8.0e18, 3.0e22};
    document.degree = 5;
    model.near_slant_range = 650000.125;
    model.range_pix_spacing = 2.5;
    file.sarModel = &model;
    file.product = &document;
    file.width = 1000;
  }
  // The largest difference of a term's contribution at the far point, relative to the slant range
  // that the terms span there.
  double difference(const std::array<double, terms>& expected) const {
    const double d = 9 * 1000 * 1.5 / c * 2.0;
    double ground = 0;
    for (std::size_t i = document.polynomial.size(); i-- > 0;) {
      ground = ground * d + document.polynomial[i];
    }
    double largest = 0;
    for (std::size_t i = 1; i < terms; ++i) {
      largest = std::max(largest, std::fabs(model.gnd2slt_coeffs[i] - expected[i]) *
                                      std::pow(ground, static_cast<double>(i)));
    }
    return largest / (d * c / 2);
  }
  FakeDocument document;
  RadarGenericModel model{};
  TsxFile file{};
};

TEST_F(GroundToSlant, IsTheLeastSquaresFitWithTheNearRangeInFront) {
  ASSERT_EQ(tsx_ComputeGnd2slt_coeffs(&file), 0);
  EXPECT_EQ(model.gnd2slt_coeffs[0], 650000.125) << "exactly, the fitted constant is dropped";
  EXPECT_LT(difference(fitted(document.polynomial, 1.5, 6)), 1e-9);
}

TEST_F(GroundToSlant, TakesZeroForTheTermsThatALowerDegreeLacks) {
  document.degree = 2;
  document.polynomial = {0.0, 2.6e8, -4.9e11};
  ASSERT_EQ(tsx_ComputeGnd2slt_coeffs(&file), 0);
  EXPECT_EQ(document.coefficients_read, 3U);
  EXPECT_LT(difference(fitted(document.polynomial, 1.5, 3)), 1e-9);
  EXPECT_EQ(model.gnd2slt_coeffs[3], 0);
}

TEST_F(GroundToSlant, StoresSixTermsOfAHigherDegree) {
  const auto five = fitted(document.polynomial, 1.5, 6);
  document.degree = 9;
  document.polynomial.insert(document.polynomial.end(), {1.0, 1.0, 1.0, 1.0});
  ASSERT_EQ(tsx_ComputeGnd2slt_coeffs(&file), 0);
  document.polynomial.resize(terms);
  EXPECT_LT(difference(five), 1e-9);
}

TEST_F(GroundToSlant, OfADegreeAboveNineIsTheSolversRefusal) {
  for (const std::uint32_t degree : {10U, 255U, 256U, 4294967295U}) {
    document.degree = degree;
    EXPECT_EQ(tsx_ComputeGnd2slt_coeffs(&file), 2) << degree;
    EXPECT_EQ(document.coefficients_read, 0U) << "an index of 256 would end the process";
    EXPECT_EQ(model.gnd2slt_coeffs[0], 0) << "nothing is filled";
  }
}

TEST_F(GroundToSlant, ThatIsNearlyZeroIsNotStored) {
  // No spacing: all points lie at the first pixel, and so does the right-hand side.
  document.slant_range_spacing = 0;
  ASSERT_EQ(tsx_ComputeGnd2slt_coeffs(&file), 0);
  EXPECT_EQ(model.gnd2slt_coeffs[0], model.near_slant_range);
  for (int i = 1; i < terms; ++i) EXPECT_EQ(model.gnd2slt_coeffs[i], 0) << i;
}

TEST_F(GroundToSlant, ThatIsNoNumberIsNotStored) {
  document.polynomial[1] = std::numeric_limits<double>::quiet_NaN();
  ASSERT_EQ(tsx_ComputeGnd2slt_coeffs(&file), 0);
  EXPECT_EQ(model.gnd2slt_coeffs[0], model.near_slant_range);
  for (int i = 1; i < terms; ++i) EXPECT_EQ(model.gnd2slt_coeffs[i], 0) << i;
}

TEST_F(GroundToSlant, OfNoRecordIsRefused) {
  EXPECT_EQ(tsx_ComputeGnd2slt_coeffs(nullptr), -1);
}

TEST(GroundToSlantSystem, HasAPointEveryThousandPixels) {
  // d = k * 1000 * 1.5 / c * 2: 0, 1.0007e-5, ...; G = 3 + 2e8 d.
  const double a[] = {3, 2e8, 0, 0, 0, 0};
  double matrix[2 * 4] = {-1, -1, -1, -1, -1, -1, -1, -1};
  double rhs[2];
  ASSERT_EQ(tsx_BuildGnd2sltSystem(0, 0, 1.5, a, 3, 2, 4, matrix, rhs), 0);
  const double first[] = {1, 3, 9, -1};
  for (int i = 0; i < 4; ++i) EXPECT_EQ(matrix[i], first[i]) << "the last is past those used";
  const double ground = 3 + 2e8 * (3000.0 / c);
  EXPECT_EQ(matrix[4], 1);
  EXPECT_DOUBLE_EQ(matrix[5], ground);
  EXPECT_DOUBLE_EQ(matrix[6], ground * ground);
  EXPECT_EQ(rhs[0], 0);
  EXPECT_DOUBLE_EQ(rhs[1], 1500) << "a thousand pixels of 1.5 m";
}

TEST(GroundToSlantSystem, TakesSixCoefficientsAndNoColumnBehindTheSixth) {
  // In units of time such that d is 1 at the second point: G = 1 + 2 + 4 + 8 + 16 + 32.
  const double a[] = {1, 2, 4, 8, 16, 32};
  double matrix[2 * 7];
  std::fill(std::begin(matrix), std::end(matrix), -1.0);
  double rhs[2];
  ASSERT_EQ(tsx_BuildGnd2sltSystem(0, 0, c / 2000, a, 7, 2, 7, matrix, rhs), 0);
  for (int i = 0; i < 6; ++i) EXPECT_DOUBLE_EQ(matrix[7 + i], std::pow(63.0, i)) << i;
  EXPECT_EQ(matrix[13], -1);
}

TEST(GroundToSlantSystem, RefusesMissingArraysAndSizes) {
  double a[16] = {};
  EXPECT_EQ(tsx_BuildGnd2sltSystem(0, 0, 1, nullptr, 1, 1, 1, a, a), -1);
  EXPECT_EQ(tsx_BuildGnd2sltSystem(0, 0, 1, a, 1, 1, 1, nullptr, a), -1);
  EXPECT_EQ(tsx_BuildGnd2sltSystem(0, 0, 1, a, 1, 1, 1, a, nullptr), -1);
  EXPECT_EQ(tsx_BuildGnd2sltSystem(0, 0, 1, a, 1, 0, 1, a, a), -1);
  EXPECT_EQ(tsx_BuildGnd2sltSystem(0, 0, 1, a, 1, 1, 0, a, a), -1);
}

}  // namespace
