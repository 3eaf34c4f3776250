#include "tools/simulate/pixel.h"

#include <cmath>

namespace simulate {

std::vector<Pixel> target_pixels(std::int32_t lines, std::int32_t samples, std::int32_t count) {
  std::vector<Pixel> pixels;
  const auto side = static_cast<int>(std::ceil(std::sqrt(static_cast<double>(count))));
  for (int i = 0; i < count; ++i) {
    const int target_row = i / side;
    const double row = (target_row + 0.5) / side;
    const double column = (i % side + 0.5) / side;
    // Off the grid by a part of a pixel that differs from target to target.
    pixels.push_back({std::floor(row * lines) + 0.37 * (i % 3 - 1),
                      std::floor(column * samples) + 0.29 * ((i + 1) % 3 - 1)});
  }
  return pixels;
}

}  // namespace simulate
