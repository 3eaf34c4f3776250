#include "rmdllib/hermite_orbit.h"

#include <algorithm>
#include <cstddef>

namespace rmdllib {

AxisState HermiteOrbit::at(double time) const {
  const auto intervals = static_cast<double>(positions_.size() - 1);
  const double place = std::clamp(time / interval_, 0.0, intervals);
  const std::size_t i = std::min(static_cast<std::size_t>(place), positions_.size() - 2);
  const double x = place - static_cast<double>(i);
  const double v0 = velocities_[i];
  const double v1 = velocities_[i + 1];
  const double mean = (positions_[i + 1] - positions_[i]) / interval_;
  const double second = 3 * mean - 2 * v0 - v1;
  const double third = v0 + v1 - 2 * mean;
  return {positions_[i] + interval_ * x * (v0 + x * (second + x * third)),
          v0 + x * (2 * second + 3 * x * third)};
}

}  // namespace rmdllib
