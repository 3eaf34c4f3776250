#pragma once

#include <cstdint>
#include <vector>

namespace simulate {

// A place in an image, at pixel centres: (0, 0) is the first pixel's centre.
struct Pixel {
  double line = 0;
  double sample = 0;
};

// How far pixels lie apart on the ground.
struct GroundSpacing {
  double line_metres = 0;    // from line to line, along azimuth
  double sample_metres = 0;  // from sample to sample, along range
};

// Where point targets stand in an image: on a regular grid, off the pixel centres.
std::vector<Pixel> target_pixels(std::int32_t lines, std::int32_t samples, std::int32_t count);

}  // namespace simulate
