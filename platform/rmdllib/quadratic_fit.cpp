#include "rmdllib/quadratic_fit.h"

namespace rmdllib {

namespace {

// From -1 to 1 over the samples.
constexpr double scaled_place(std::size_t k) {
  return 2.0 * static_cast<double>(k) / static_cast<double>(sample_count - 1) - 1.0;
}

// The share of a polynomial, given by its values, in `values`: their weighted product over its
// weighted square.
double share(const Samples& weights, const Samples& polynomial, const Samples& values) {
  double product = 0;
  double square = 0;
  for (std::size_t k = 0; k < sample_count; ++k) {
    product += weights[k] * polynomial[k] * values[k];
    square += weights[k] * polynomial[k] * polynomial[k];
  }
  return product / square;
}

constexpr Samples ones() {
  Samples values{};
  values.fill(1.0);
  return values;
}

constexpr Samples scaled_places() {
  Samples places{};
  for (std::size_t k = 0; k < sample_count; ++k) places[k] = scaled_place(k);
  return places;
}

constexpr Samples constant = ones();
constexpr Samples identity = scaled_places();

}  // namespace

QuadraticFit::QuadraticFit(double first, double last, const Samples& weights)
    : centre_(first + (last - first) / 2),
      half_width_((last - first) / 2),
      weights_(weights),
      linear_(identity),
      quadratic_{},
      linear_shift_(share(weights_, constant, identity)) {
  for (double& value : linear_) value -= linear_shift_;
  for (std::size_t k = 0; k < sample_count; ++k) quadratic_[k] = identity[k] * linear_[k];
  quadratic_shift_ = share(weights_, linear_, quadratic_);
  quadratic_offset_ = share(weights_, constant, quadratic_);
  for (std::size_t k = 0; k < sample_count; ++k) {
    quadratic_[k] -= quadratic_shift_ * linear_[k] + quadratic_offset_;
  }
}

double QuadraticFit::place(double first, double last, std::size_t k) {
  return first + (last - first) / 2 * (1.0 + scaled_place(k));
}

Quadratic QuadraticFit::terms(const Samples& values) const {
  const double slope = share(weights_, linear_, values);
  const double c = share(weights_, quadratic_, values);
  const double b = slope - c * (linear_shift_ + quadratic_shift_);
  const double a = share(weights_, constant, values) - slope * linear_shift_ +
                   c * (linear_shift_ * quadratic_shift_ - quadratic_offset_);
  // a + b u + c u^2 with u = (t - centre) / half width, in powers of t.
  const double shift = centre_ / half_width_;
  return {a - shift * (b - shift * c), (b - 2 * c * shift) / half_width_,
          c / half_width_ / half_width_};
}

}  // namespace rmdllib
