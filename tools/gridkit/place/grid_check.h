#pragma once

#include <cstddef>
#include <nlohmann/json.hpp>
#include <string>

#include "gridkit/geolocation_grid.h"
#include "rmdllib/radar_geometry.h"

// How far a geometry places the points of a geolocation grid from where they are, at the times that
// the grid has for them.

// Of one quantity over all points, in metres.
struct Residuals {
  double mean = 0;
  double scatter = 0;  // standard deviation about the mean
  double worst = 0;    // largest distance from 0
};

struct GridCheck {
  std::size_t points = 0;
  Residuals along;   // in the direction of flight, by how far the point is passed too late
  Residuals across;  // along the line of sight, by how much the point's range is too long
  Residuals height;  // by which height the point would have to rise for its range to be right
};

// Compares every point with the geometry: seen from its place on Earth against its own azimuth and
// range time, less the geometry's corrections. Throws gridkit::Error where a point is not seen.
GridCheck check_grid(const rmdllib::RadarGeometry& geometry, const gridkit::GeolocationGrid& grid);

// What is wrong about a grid, one sentence; empty where it agrees with the geometry.
std::string fault_of(const GridCheck& check);

// The result as `gridkit locate --check` shows it.
nlohmann::ordered_json grid_as_json(const GridCheck& check);
void print_grid(const GridCheck& check);
