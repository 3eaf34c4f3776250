#pragma once

#include <memory>
#include <vector>

#include "tools/simulate/pixel.h"

namespace simulate {

struct Scene;

// How much brighter than level ground an image's pixels are, by the slopes that they show: the
// factor of their power on a coarse grid, blended bilinearly.
class Shading {
 public:
  // sin(theta) / sin(theta - slope) with theta the incidence angle on the ellipsoid and the slope
  // towards the satellite, from 0.05 (in shadow) to 12 (in layover).
  explicit Shading(const Scene& scene);

  double at(Pixel pixel) const;

 private:
  double& node(std::size_t row, std::size_t column) { return factors_[row * columns_ + column]; }
  double node(std::size_t row, std::size_t column) const {
    return factors_[row * columns_ + column];
  }

  std::size_t rows_;
  std::size_t columns_;
  Pixel step_;
  std::vector<double> factors_;
};

}  // namespace simulate
