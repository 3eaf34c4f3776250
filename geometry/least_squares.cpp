#include "geometry/least_squares.h"

#include <cmath>
#include <cstddef>
#include <vector>

namespace {

// Place of element (row, column) in a row-major matrix.
std::size_t at(std::int32_t row, std::int32_t columns, std::int32_t column) {
  return static_cast<std::size_t>(row) * static_cast<std::size_t>(columns) +
         static_cast<std::size_t>(column);
}

// Place of element (row, column), column <= row, in a packed triangle.
std::size_t packed_at(std::int32_t row, std::int32_t column) {
  const auto r = static_cast<std::size_t>(row);
  return r * (r + 1) / 2 + static_cast<std::size_t>(column);
}

// Row i of the transpose times column j of the matrix.
double row_times_column(std::int32_t rows, std::int32_t columns, const double* transpose,
                        const double* matrix, std::int32_t i, std::int32_t j) {
  double sum = 0;
  for (std::int32_t k = 0; k < rows; ++k) {
    sum += transpose[at(i, rows, k)] * matrix[at(k, columns, j)];
  }
  return sum;
}

}  // namespace

void tsx_MatrixTranspose(std::int32_t rows, std::int32_t columns, const double* matrix,
                         double* transpose) {
  for (std::int32_t i = 0; i < rows; ++i) {
    for (std::int32_t j = 0; j < columns; ++j) {
      transpose[at(j, rows, i)] = matrix[at(i, columns, j)];
    }
  }
}

void tsx_NormalMatrixPacked(std::int32_t rows, std::int32_t columns, const double* transpose,
                            const double* matrix, double* packed) {
  for (std::int32_t i = 0; i < columns; ++i) {
    for (std::int32_t j = 0; j <= i; ++j) {
      packed[packed_at(i, j)] = row_times_column(rows, columns, transpose, matrix, i, j);
    }
  }
}

void tsx_NormalMatrixFull(std::int32_t rows, std::int32_t columns, const double* transpose,
                          const double* matrix, double* normal) {
  for (std::int32_t i = 0; i < columns; ++i) {
    for (std::int32_t j = 0; j < columns; ++j) {
      normal[at(i, columns, j)] = row_times_column(rows, columns, transpose, matrix, i, j);
    }
  }
}

void tsx_NormalRhs(std::int32_t rows, std::int32_t columns, const double* transpose,
                   const double* rhs, double* solution) {
  for (std::int32_t i = 0; i < columns; ++i) {
    solution[i] = row_times_column(rows, 1, transpose, rhs, i, 0);
  }
}

void tsx_CholeskyPacked(std::int32_t order, double* packed) {
  constexpr double smallest_pivot = 1e-16;
  for (std::int32_t i = 0; i < order; ++i) {
    double squares = 0;
    for (std::int32_t j = 0; j < i; ++j) {
      double sum = 0;
      for (std::int32_t k = 0; k < j; ++k) sum += packed[packed_at(j, k)] * packed[packed_at(i, k)];
      double& element = packed[packed_at(i, j)];
      element = (element - sum) / packed[packed_at(j, j)];
      squares += element * element;
    }
    double& diagonal = packed[packed_at(i, i)];
    const double pivot = diagonal - squares;
    if (pivot <= smallest_pivot * diagonal) return;
    diagonal = std::sqrt(pivot);
  }
}

void tsx_ForwardSubstitute(std::int32_t order, const double* packed, double* solution) {
  for (std::int32_t i = 0; i < order; ++i) {
    double sum = 0;
    for (std::int32_t k = 0; k < i; ++k) sum += packed[packed_at(i, k)] * solution[k];
    solution[i] = (solution[i] - sum) / packed[packed_at(i, i)];
  }
}

void tsx_BackSubstitute(std::int32_t order, const double* packed, double* solution) {
  for (std::int32_t i = order - 1; i >= 0; --i) {
    solution[i] = solution[i] / packed[packed_at(i, i)];
    for (std::int32_t j = 0; j < i; ++j) solution[j] -= packed[packed_at(i, j)] * solution[i];
  }
}

void tsx_ResidualVector(std::int32_t rows, std::int32_t columns, const double* matrix,
                        const double* rhs, const double* solution, double* residuals) {
  for (std::int32_t i = 0; i < rows; ++i) {
    double sum = 0;
    for (std::int32_t j = 0; j < columns; ++j) sum += matrix[at(i, columns, j)] * solution[j];
    residuals[i] = rhs[i] - sum;
  }
}

double tsx_QuadraticForm(std::int32_t order, const double* normal, const double* solution) {
  double result = 0;
  for (std::int32_t i = 0; i < order; ++i) {
    double product = 0;
    for (std::int32_t j = 0; j < order; ++j) product += solution[j] * normal[at(j, order, i)];
    result += solution[i] * product;
  }
  return result;
}

std::int32_t tsx_SolveLeastSquares(std::int32_t rows, std::int32_t columns, const double* rhs,
                                   const double* matrix, double* solution, double* residuals,
                                   double* fitNorm) {
  if (rhs == nullptr || matrix == nullptr || solution == nullptr || residuals == nullptr ||
      fitNorm == nullptr || rows < 1 || columns < 1) {
    return 1;
  }
  if (rows < columns) return 2;
  std::vector<double> transpose(at(columns, rows, 0));
  std::vector<double> factor(packed_at(columns, 0));
  std::vector<double> normal(at(columns, columns, 0));
  tsx_MatrixTranspose(rows, columns, matrix, transpose.data());
  tsx_NormalMatrixPacked(rows, columns, transpose.data(), matrix, factor.data());
  tsx_NormalMatrixFull(rows, columns, transpose.data(), matrix, normal.data());
  tsx_NormalRhs(rows, columns, transpose.data(), rhs, solution);
  tsx_CholeskyPacked(columns, factor.data());
  tsx_ForwardSubstitute(columns, factor.data(), solution);
  tsx_BackSubstitute(columns, factor.data(), solution);
  tsx_ResidualVector(rows, columns, matrix, rhs, solution, residuals);
  *fitNorm = tsx_QuadraticForm(columns, normal.data(), solution);
  return 0;
}
