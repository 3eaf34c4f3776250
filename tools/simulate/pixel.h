#pragma once

#include <cstdint>
#include <vector>

namespace simulate {

// A place in an image, at pixel centres: (0, 0) is the first pixel's centre.
struct Pixel {
  double line = 0;
  double sample = 0;
};

// Where point targets stand in an image: on a regular grid, off the pixel centres.
std::vector<Pixel> target_pixels(std::int32_t lines, std::int32_t samples, std::int32_t count);

}  // namespace simulate
