#pragma once

#include <cstdint>

// Linear least squares by normal equations and a Cholesky factorisation in packed storage. The
// exact order of its steps decides the last digits of the solution, so each step is a function of
// its own: every sum runs over its index in rising order, in 64 bits.
//
// Matrices are row-major. A packed triangle of order n holds its rows one after the other in
// n * (n + 1) / 2 doubles: element (i, j), j <= i, at index i * (i + 1) / 2 + j.

// Solves matrix * solution = rhs. `matrix` is [rows][columns], `rhs` and `residuals` are [rows],
// `solution` is [columns]. *fitNorm becomes the squared length of the fitted values (not of the
// residuals). 0 on success, 1 for a null array or a dimension below 1, 2 for fewer rows than
// columns. A matrix without full rank is no failure: see tsx_CholeskyPacked.
std::int32_t tsx_SolveLeastSquares(std::int32_t rows, std::int32_t columns, const double* rhs,
                                   const double* matrix, double* solution, double* residuals,
                                   double* fitNorm);

// transpose[columns][rows] = matrix[rows][columns] turned.
void tsx_MatrixTranspose(std::int32_t rows, std::int32_t columns, const double* matrix,
                         double* transpose);

// packed = lower triangle of transpose * matrix, of order `columns`.
void tsx_NormalMatrixPacked(std::int32_t rows, std::int32_t columns, const double* transpose,
                            const double* matrix, double* packed);

// normal[columns][columns] = transpose * matrix.
void tsx_NormalMatrixFull(std::int32_t rows, std::int32_t columns, const double* transpose,
                          const double* matrix, double* normal);

// solution[columns] = transpose * rhs.
void tsx_NormalRhs(std::int32_t rows, std::int32_t columns, const double* transpose,
                   const double* rhs, double* solution);

// Factors the packed triangle in place. A row whose pivot is 1e-16 of its diagonal element or less
// stops the factorisation without a word: that row's diagonal and all later rows stay as they are,
// and the substitutions go on with them.
void tsx_CholeskyPacked(std::int32_t order, double* packed);

// Solves L * x = solution, then L^T * x = solution, in place.
void tsx_ForwardSubstitute(std::int32_t order, const double* packed, double* solution);
void tsx_BackSubstitute(std::int32_t order, const double* packed, double* solution);

// residuals[rows] = rhs - matrix * solution.
void tsx_ResidualVector(std::int32_t rows, std::int32_t columns, const double* matrix,
                        const double* rhs, const double* solution, double* residuals);

// solution^T * normal * solution.
double tsx_QuadraticForm(std::int32_t order, const double* normal, const double* solution);
