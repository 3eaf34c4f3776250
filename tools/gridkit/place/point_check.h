#pragma once

#include "rmdllib/placement.h"
#include "rmdllib/radar_geometry.h"
#include "tools/gridkit/place/scene_points.h"

// How far what an annotation states of a place is from what the model gives for its pixel.
struct PointCheck {
  double height = 0;  // that the sight of the pixel must end at to pass over the place, in metres
  double along = 0;   // rest at that height, in metres on the ground, in the direction of flight
  double across = 0;  // and across it, to the right
  double at_average_height = 0;  // distance when the scene's average height is taken, in metres
  // By how much the raster's own time and slant range exceed the annotated ones. The height that is
  // solved for takes up an error of the range, so that it shows here alone. 0 on a map.
  double azimuth_time = 0;  // seconds
  double slant_range = 0;   // metres

  double miss() const;  // length of the rest on the ground, in metres
};

// Heights that terrain can have. A place that no such height explains keeps a rest across the
// track.
inline constexpr double lowest_terrain = -500;
inline constexpr double highest_terrain = 9000;

// Compares a point with a sensor model's geometry. The annotation gives its points no height, so
// the terrain's is solved for: the height whose place on the pixel's range circle lies abeam of the
// point. Throws gridkit::Error where the geometry has no answer.
PointCheck check_point(const rmdllib::RadarGeometry& geometry, rmdllib::Pixel pixel,
                       const ScenePoint& stated);

// Compares a point with an image on a map: `along` is north and `across` is east.
PointCheck check_point(const rmdllib::Placement& map, rmdllib::Pixel pixel,
                       const ScenePoint& stated);
