#include "geometry/ground_to_slant.h"

#include <algorithm>
#include <cstddef>
#include <iterator>

#include "geometry/least_squares.h"
#include "geometry/physical_constants.h"

namespace {

constexpr std::int32_t points = 10;
constexpr std::int32_t model_terms = 6;
constexpr double pixels_between_points = 1000;

}  // namespace

std::int32_t tsx_BuildGnd2sltSystem(double, double, double spacing, const double* coefficients,
                                    std::int32_t columnsUsed, std::int32_t rows,
                                    std::int32_t rowStride, double* matrix, double* rhs) {
  if (coefficients == nullptr || matrix == nullptr || rhs == nullptr || rows < 1 || rowStride < 1) {
    return -1;
  }
  const double* a = coefficients;
  for (std::int32_t k = 0; k < rows; ++k) {
    const double d = k * pixels_between_points * spacing / speed_of_light * 2.0;
    const double ground = a[0] + a[1] * d + a[2] * d * d + a[3] * d * d * d + a[4] * d * d * d * d +
                          a[5] * d * d * d * d * d;
    rhs[k] = d * (speed_of_light / 2);
    double* row = matrix + static_cast<std::ptrdiff_t>(k) * rowStride;
    double power = 1.0;
    for (std::int32_t column = 0; column < std::min(columnsUsed, model_terms); ++column) {
      row[column] = power;
      power *= ground;
    }
  }
  return 0;
}

std::int32_t tsx_ComputeGnd2slt_coeffs(TsxFile* file) {
  if (file == nullptr) return -1;
  RadarGenericModel& model = *file->sarModel;
  level1bProductBase& product = *file->product;
  const std::int64_t terms = std::int64_t{product.slantToGroundPolynomialDegree()} + 1;
  const double far_edge =
      static_cast<std::uint32_t>(file->width) * model.range_pix_spacing + model.near_slant_range;
  const double spacing = product.slantRangeSpacing();
  constexpr std::int32_t more_terms_than_points = 2;
  if (terms > points) return more_terms_than_points;

  const auto used = static_cast<std::int32_t>(std::min<std::int64_t>(terms, model_terms));
  double coefficients[model_terms] = {};
  for (std::int32_t i = 0; i < used; ++i) {
    coefficients[i] = product.slantToGroundCoefficient(static_cast<std::uint32_t>(i));
  }
  double matrix[points * model_terms] = {};
  double rhs[points] = {};
  double solution[model_terms] = {};
  double residuals[points] = {};
  double fit_norm = 0;
  tsx_BuildGnd2sltSystem(model.near_slant_range / speed_of_light, far_edge / speed_of_light,
                         spacing, coefficients, used, points, used, matrix, rhs);
  const std::int32_t result =
      tsx_SolveLeastSquares(points, used, rhs, matrix, solution, residuals, &fit_norm);
  if (result != 0) return result;
  // A solution that is nearly zero, or not a number, is not stored.
  constexpr double smallest_fit = 1e-8;
  if (fit_norm > smallest_fit) std::copy_n(solution, used, std::begin(model.gnd2slt_coeffs));
  // Kept on purpose: the fitted constant gives way, so that the polynomial is absolute.
  model.gnd2slt_coeffs[0] = model.near_slant_range;
  return 0;
}
