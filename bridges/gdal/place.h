#pragma once

#include <string>
#include <utility>
#include <vector>

#include "bridges/gdal/raster_source.h"

// Where an image in radar geometry lies, in the forms that GDAL has for that.
namespace gridkit_gdal {

struct PlaceOptions {
  int32_t delays = gridkit_Default;  // gridkit_Choice: the product's corrections of signal delays
  bool has_height = false;           // control points stand at `height`, metres above the ellipsoid
  double height = 0;
};

// Control points stand on the outer corners and edges and evenly between, so many a side. Without a
// height of the caller's they stand at the terrain's, where the product tells it, else at the
// scene's average height.
inline constexpr int control_points_a_side = 15;

struct ControlPoint {
  double column;  // whole numbers are corners of pixels
  double line;
  double longitude;  // degrees on WGS 84, beyond 180 where a scene lies over the date line
  double latitude;
  double height;  // metres above the ellipsoid
};

// Empty where the image cannot be placed, which is no failure.
std::vector<ControlPoint> control_points_of(const RasterSource& source,
                                            const PlaceOptions& options);

// Names and texts of GDAL's metadata domain RPC; empty where there is no such model. Numbers read
// back bit for bit.
std::vector<std::pair<std::string, std::string>> rational_model_of(const RasterSource& source,
                                                                   const PlaceOptions& options);

// The shortest text that reads back to the bit.
std::string number_text(double value);

}  // namespace gridkit_gdal
