#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "tools/simulate/wgs84.h"

namespace simulate {

// Heights above the ellipsoid on a grid, blended bilinearly between the centres of its pixels.
class Terrain {
 public:
  virtual ~Terrain() = default;

  // In metres. Throws std::domain_error where the grid has no height.
  virtual double height_at(double latitude_radians, double longitude_radians) const = 0;

  // No height of the grid is less or more.
  virtual double lowest() const = 0;
  virtual double highest() const = 0;
};

// What a synthetic terrain is made for: `extent` is in every direction from the centre, in metres.
struct TerrainPlan {
  Geodetic centre;    // its height is the middle of the terrain's
  double relief = 0;  // m, between the lowest and the highest that may occur
  double extent = 0;
};

// Hills of a quarter of a kilometre to four, on a grid of one arcsecond. Where two plans of one
// centre and relief overlap they give the same heights.
std::shared_ptr<const Terrain> make_terrain(const TerrainPlan& plan);

// The same as a GeoTIFF of 32-bit floats on WGS 84 latitudes and longitudes. Throws std::exception
// when it cannot be written.
void write_terrain(const std::string& path, const TerrainPlan& plan);

// A GeoTIFF of any map system that the host knows; its values are taken for metres above the
// ellipsoid. Throws std::exception for a file that is no such one, is larger than 100 million
// pixels or has no map.
std::shared_ptr<const Terrain> read_terrain(const std::string& path);

}  // namespace simulate
