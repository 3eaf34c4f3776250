#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "tools/simulate/ground_range.h"
#include "tools/simulate/map_projection.h"
#include "tools/simulate/options.h"
#include "tools/simulate/orbit.h"
#include "tools/simulate/pixel.h"
#include "tools/simulate/range_doppler.h"
#include "tools/simulate/terrain.h"
#include "tools/simulate/utc.h"

namespace simulate {

struct MapGrid {
  MapProjection projection;
  MapPoint upper_left;  // centre of the first pixel
  double spacing;       // m
};

// Times of a raster's line and sample, as an annotation counts them.
struct RasterTimes {
  double azimuth = 0;  // s
  double range = 0;    // s, two-way
};

// The times at which an annotation tells the orbit's states: whole UTC seconds, the first some 50 s
// before the scene.
struct StateTimes {
  double first = 0;    // s
  double spacing = 0;  // s
  std::size_t count = 0;

  double at(std::size_t i) const { return first + spacing * static_cast<double>(i); }
};

// Everything about a simulated acquisition and its image's geometry. Times are seconds from
// `epoch`, when the centre is abeam; the orbit's are too. The epoch, the start and the stop fall on
// whole microseconds, so that six decimals tell them exactly.
struct Scene {
  Options options;
  Orbit orbit;
  Geodetic centre{};  // of the image, at the average height
  double prf = 0;     // Hz
  double rsf = 0;     // Hz
  double start = 0;   // zero-Doppler times of the scene's first and last line
  double stop = 0;
  double near_time = 0;  // two-way slant range times of the nearest and farthest pixel, s
  double far_time = 0;
  double line_spacing_seconds = 0;    // along azimuth; complex images only
  double sample_spacing_seconds = 0;  // along range, two-way; complex images only
  double line_spacing_metres = 0;     // the same of all others
  double sample_spacing_metres = 0;
  double ground_velocity = 0;                           // m/s, of the zero-Doppler point
  std::optional<GroundRangePolynomial> ground_range{};  // MGD
  std::optional<MapGrid> map{};                         // GEC, EEC
  Utc epoch{};
  StateTimes states{};
  std::shared_ptr<const Terrain> terrain{};  // null where the heights follow no terrain model

  Utc utc(double time) const { return epoch.after(time); }
  bool is_complex() const { return options.variant == Variant::ssc; }

  // As an annotation tells the spacings: in seconds of complex images, in metres of others.
  double annotated_line_spacing() const {
    return is_complex() ? line_spacing_seconds : line_spacing_metres;
  }
  double annotated_sample_spacing() const {
    return is_complex() ? sample_spacing_seconds : sample_spacing_metres;
  }

  // The place that a pixel shows, and the pixel that shows a place.
  Geodetic to_ground(Pixel pixel) const;
  Pixel to_pixel(const Geodetic& place) const;

  // The place that a pixel would show if the terrain lay at the average height everywhere.
  Geodetic to_average_ground(Pixel pixel) const;

  // When and how far away what a pixel shows was seen. The raster's own times differ from these by
  // the signal's delays.
  RadarPoint seen_in(Pixel pixel) const;

  // The raster's own time of a line and two-way range time of a sample; of a map-projected image,
  // those of what the pixel shows.
  RasterTimes times_of(Pixel pixel) const;

  // The pixel of such times, and the place: the highest one of the terrain that is seen then.
  Pixel pixel_at(RasterTimes times) const;
  Geodetic ground_at(RasterTimes times) const;

  // The place that a corner's annotation tells, and when the raster has it: at the average height,
  // with the azimuth shift but without the delays of range, as the annotations of products do.
  Geodetic annotated_place(Pixel pixel) const;
  RasterTimes annotated_times(const Geodetic& place) const;

  // Height of the terrain: that of its model, where there is none the average everywhere but in
  // terrain-corrected products.
  double terrain_height(double latitude_radians, double longitude_radians) const;

  // Between these the terrain's heights lie.
  std::pair<double, double> height_range() const;

  double incidence_at(const Geodetic& place) const { return incidence_angle(orbit, place); }

  // Direction of flight over ground at the centre, degrees clockwise from north.
  double heading() const;

  // Of pixels at the centre, on the ground.
  GroundSpacing ground_spacing() const;
};

// A point target: where it is and where the image shows it.
struct Target {
  std::string name;
  Geodetic place;
  Pixel pixel;
};

// The synthetic terrain of a scene with relief.
TerrainPlan terrain_plan(const Scene& scene);

// Lays out a scene. Throws std::invalid_argument for what cannot be, and std::exception for a
// terrain model that cannot be read.
Scene make_scene(const Options& options);

// Targets on a regular grid inside the image, off the pixel centres; fewer in images too small for
// them.
std::vector<Target> place_targets(const Scene& scene);

// Corners: of a map-projected image its first and last line at first and last sample; of any other
// the first and last line acquired at nearest and farthest range, wherever the raster has them.
std::array<Pixel, 4> corners_of(const Scene& scene);

}  // namespace simulate
