#pragma once

#include <cmath>
#include <cstdint>

#include "tools/simulate/random.h"

namespace simulate {

// Smooth noise in [0, 1]: random values at whole coordinates, blended between. The slope is 1.5 a
// unit at most, along either axis.
inline double noise(double x, double y, std::uint64_t seed) {
  const double fx = std::floor(x);
  const double fy = std::floor(y);
  const auto at = [&](double gx, double gy) {
    const auto kx = static_cast<std::uint64_t>(static_cast<std::int64_t>(gx));
    const auto ky = static_cast<std::uint64_t>(static_cast<std::int64_t>(gy));
    return uniform(random_bits(seed ^ random_bits(kx ^ random_bits(ky))));
  };
  const auto ease = [](double t) { return t * t * (3 - 2 * t); };
  const double u = ease(x - fx);
  const double v = ease(y - fy);
  const double top = at(fx, fy) * (1 - u) + at(fx + 1, fy) * u;
  const double bottom = at(fx, fy + 1) * (1 - u) + at(fx + 1, fy + 1) * u;
  return top * (1 - v) + bottom * v;
}

}  // namespace simulate
