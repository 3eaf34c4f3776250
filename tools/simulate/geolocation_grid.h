#pragma once

#include <cstddef>
#include <string>

#include "tools/simulate/scene.h"

namespace simulate {

// The geolocation grid of a product, GEOREF.xml: delays of the signal, and points even in the
// raster's azimuth and range time that cover the image and may reach beyond it by less than a step.
// A point's latitude, longitude and height are where its pixel really is: seen at the range time of
// the geometry, which is the raster's less the delays, and at the time of closest approach, which
// is the raster's less the azimuth shift.

struct GridSize {
  std::size_t azimuth = 0;
  std::size_t range = 0;
};

// Points of a scene's grid: one every 32 to 270 lines and 232 samples.
GridSize grid_size_of(const Scene& scene);

// Element by element as products have it; `product` is the annotation's name without its ending.
// Throws std::exception when the file cannot be written.
void write_geolocation_grid(const std::string& path, const Scene& scene,
                            const std::string& product);

}  // namespace simulate
