#include "geometry/least_squares.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

namespace {

TEST(LeastSquares, FindsTheLineThroughExactData) {
  // 2 + 3 t at ten values of t.
  std::vector<double> matrix;
  std::vector<double> rhs;
  for (int t = 0; t < 10; ++t) {
    matrix.insert(matrix.end(), {1.0, static_cast<double>(t)});
    rhs.push_back(2 + 3 * t);
  }
  double solution[2];
  double residuals[10];
  double norm = 0;
  ASSERT_EQ(tsx_SolveLeastSquares(10, 2, rhs.data(), matrix.data(), solution, residuals, &norm), 0);
  EXPECT_NEAR(solution[0], 2, 1e-13);
  EXPECT_NEAR(solution[1], 3, 1e-13);
  for (const double r : residuals) EXPECT_NEAR(r, 0, 1e-12);
  // The sum of (2 + 3 t)^2: 10 * 4 + 12 * 45 + 9 * 285.
  EXPECT_NEAR(norm, 3145, 1e-9) << "of the fitted values";
}

TEST(LeastSquares, LeavesResiduals) {
  // The mean of 1, 2 and 6 is 3.
  const double matrix[] = {1, 1, 1};
  const double rhs[] = {1, 2, 6};
  double solution = 0;
  double residuals[3];
  double norm = 0;
  ASSERT_EQ(tsx_SolveLeastSquares(3, 1, rhs, matrix, &solution, residuals, &norm), 0);
  EXPECT_NEAR(solution, 3, 1e-15);
  EXPECT_NEAR(residuals[0], -2, 1e-15);
  EXPECT_NEAR(residuals[1], -1, 1e-15);
  EXPECT_NEAR(residuals[2], 3, 1e-15);
  EXPECT_NEAR(norm, 27, 1e-13);
}

TEST(LeastSquares, RefusesMissingArraysAndSizes) {
  double a[4] = {1, 0, 0, 1};
  double norm = 0;
  EXPECT_EQ(tsx_SolveLeastSquares(2, 2, nullptr, a, a, a, &norm), 1);
  EXPECT_EQ(tsx_SolveLeastSquares(2, 2, a, nullptr, a, a, &norm), 1);
  EXPECT_EQ(tsx_SolveLeastSquares(2, 2, a, a, nullptr, a, &norm), 1);
  EXPECT_EQ(tsx_SolveLeastSquares(2, 2, a, a, a, nullptr, &norm), 1);
  EXPECT_EQ(tsx_SolveLeastSquares(2, 2, a, a, a, a, nullptr), 1);
  EXPECT_EQ(tsx_SolveLeastSquares(0, 2, a, a, a, a, &norm), 1);
  EXPECT_EQ(tsx_SolveLeastSquares(2, 0, a, a, a, a, &norm), 1);
  EXPECT_EQ(tsx_SolveLeastSquares(2, -1, a, a, a, a, &norm), 1);
  EXPECT_EQ(tsx_SolveLeastSquares(1, 2, a, a, a, a, &norm), 2) << "fewer rows than columns";
}

TEST(Cholesky, FactorsInPackedRows) {
  // [4 2; 2 5] = L L^T with L = [2 0; 1 2].
  double packed[] = {4, 2, 5};
  tsx_CholeskyPacked(2, packed);
  EXPECT_EQ(packed[0], 2);
  EXPECT_EQ(packed[1], 1);
  EXPECT_EQ(packed[2], 2);
  double x[] = {4, 7};  // L y = (4, 7): y = (2, 2.5); L^T x = y: x = (0.375, 1.25)
  tsx_ForwardSubstitute(2, packed, x);
  EXPECT_EQ(x[0], 2);
  EXPECT_EQ(x[1], 2.5);
  tsx_BackSubstitute(2, packed, x);
  EXPECT_EQ(x[0], 0.375);
  EXPECT_EQ(x[1], 1.25);
}

TEST(Cholesky, StopsAtAColumnOfZeros) {
  // Column 1 is zero, so row 1 of the triangle is zero and stays, as does all of row 2.
  double packed[] = {4, 0, 0, 6, 0, 9};
  tsx_CholeskyPacked(3, packed);
  const double expected[] = {2, 0, 0, 6, 0, 9};
  for (int i = 0; i < 6; ++i) EXPECT_EQ(packed[i], expected[i]) << i;
}

TEST(Cholesky, StopsAtAPivotOf1e16thOfItsDiagonal) {
  // Row 1: 1 / 1 = 1, pivot (1 + 2^-52) - 1 = 2.2e-16 > 1e-16 goes on; exactly 0 stops.
  double goes_on[] = {1, 1, 1 + 0x1p-52};
  tsx_CholeskyPacked(2, goes_on);
  EXPECT_EQ(goes_on[2], 0x1p-26);
  double stops[] = {1, 1, 1};
  tsx_CholeskyPacked(2, stops);
  EXPECT_EQ(stops[2], 1);
  // The quotient below the diagonal was stored before the stop.
  double quotient[] = {4, 4, 4, 8, 8, 8};
  tsx_CholeskyPacked(3, quotient);
  const double expected[] = {2, 2, 4, 8, 8, 8};
  for (int i = 0; i < 6; ++i) EXPECT_EQ(quotient[i], expected[i]) << i;
}

TEST(LeastSquares, GoesOnWithAColumnOfZeros) {
  // The factorisation stops at row 1, whose diagonal 0 then divides 0: no number, and no failure.
  const double matrix[] = {1, 0, 1, 0, 1, 0};
  const double rhs[] = {1, 2, 3};
  double solution[2];
  double residuals[3];
  double norm = 0;
  EXPECT_EQ(tsx_SolveLeastSquares(3, 2, rhs, matrix, solution, residuals, &norm), 0);
  EXPECT_TRUE(std::isnan(solution[1]));
  EXPECT_TRUE(std::isnan(norm));
}

TEST(NormalMatrix, IsTheSamePackedAndFull) {
  const double matrix[] = {1, 2, 3, 4, 5, 6};  // [3][2]
  double transpose[6];
  tsx_MatrixTranspose(3, 2, matrix, transpose);
  const double turned[] = {1, 3, 5, 2, 4, 6};
  for (int i = 0; i < 6; ++i) EXPECT_EQ(transpose[i], turned[i]) << i;
  double packed[3];
  tsx_NormalMatrixPacked(3, 2, transpose, matrix, packed);
  EXPECT_EQ(packed[0], 35);  // 1 + 9 + 25
  EXPECT_EQ(packed[1], 44);  // 2 + 12 + 30
  EXPECT_EQ(packed[2], 56);  // 4 + 16 + 36
  double full[4];
  tsx_NormalMatrixFull(3, 2, transpose, matrix, full);
  EXPECT_EQ(full[0], 35);
  EXPECT_EQ(full[1], 44);
  EXPECT_EQ(full[2], 44);
  EXPECT_EQ(full[3], 56);
  const double rhs[] = {1, 1, 2};
  double x[2];
  tsx_NormalRhs(3, 2, transpose, rhs, x);
  EXPECT_EQ(x[0], 14);
  EXPECT_EQ(x[1], 18);
  EXPECT_EQ(tsx_QuadraticForm(2, full, x), 14 * (14 * 35 + 18 * 44) + 18 * (14 * 44 + 18 * 56));
}

}  // namespace
