#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "companion/product_facts.h"
#include "gridkit/companion.h"

namespace companion {

// A product's geolocation grid; without points there is none.
struct GeolocationGrid {
  std::int32_t points_along = 0;
  std::int32_t points_across = 0;
  std::vector<gkc_GridPoint> points;  // [points_along][points_across]
  double range_delay = 0;             // s, both ways
  double azimuth_shift = 0;           // s
};

// Reads the file of a geolocation grid (GEOREF.xml) of a product whose annotation has these facts.
// Every element that is used must be there as often as it should, with numbers that can be, and
// times, rows and columns must be those of the scene; elements that are not known are passed over.
// Memory goes by the file's size and stays below 130 MB. Throws Failure.
GeolocationGrid read_geolocation_grid(const std::string& path, const ProductFacts& facts);

}  // namespace companion
