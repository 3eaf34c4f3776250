#include <algorithm>
#include <cstddef>

#include "gridkit/radiometry.h"

namespace gridkit {

double NoisePolynomial::at(double range_time) const {
  const double held = std::min(std::max(range_time, range_time_min), range_time_max);
  const double offset = held - reference_time;
  double value = 0;
  for (std::size_t i = coefficients.size(); i-- > 0;) value = value * offset + coefficients[i];
  return value;
}

double NoiseRecord::at(double range_time) const {
  const auto distance = [&](const NoisePolynomial& one) {
    return std::max({one.range_time_min - range_time, range_time - one.range_time_max, 0.0});
  };
  return std::min_element(polynomials.begin(), polynomials.end(),
                          [&](const NoisePolynomial& a, const NoisePolynomial& b) {
                            return distance(a) < distance(b);
                          })
      ->at(range_time);
}

}  // namespace gridkit
