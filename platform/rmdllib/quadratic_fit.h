#pragma once

#include <array>
#include <cstddef>

namespace rmdllib {

// The number of samples of a fit.
inline constexpr std::size_t sample_count = 129;

using Samples = std::array<double, sample_count>;
using Quadratic = std::array<double, 3>;  // constant, linear and quadratic term

// Weighted least-squares fits of quadratics to samples at equal distances. The unknowns are the
// factors of polynomials that are orthogonal over the samples, so that no system is solved whose
// condition depends on where the samples lie.
class QuadraticFit {
 public:
  // Sample k lies at `first` + (`last` - `first`) * k / (sample_count - 1). Weights are not
  // negative, and at least three are positive.
  QuadraticFit(double first, double last, const Samples& weights);

  static double place(double first, double last, std::size_t k);

  // The terms of the polynomial in t that fits the values best.
  Quadratic terms(const Samples& values) const;

 private:
  double centre_;
  double half_width_;
  const Samples weights_;
  Samples linear_;
  Samples quadratic_;
  double linear_shift_;     // linear_ = u - linear_shift_, u being -1 .. 1 over the samples
  double quadratic_shift_;  // quadratic_ = (u - quadratic_shift_) * linear_ - quadratic_offset_
  double quadratic_offset_;
};

}  // namespace rmdllib
