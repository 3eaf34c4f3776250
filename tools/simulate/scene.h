#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tools/simulate/ground_range.h"
#include "tools/simulate/map_projection.h"
#include "tools/simulate/options.h"
#include "tools/simulate/orbit.h"
#include "tools/simulate/range_doppler.h"
#include "tools/simulate/utc.h"

namespace simulate {

// A place in an image, at pixel centres: (0, 0) is the first pixel's centre.
struct Pixel {
  double line = 0;
  double sample = 0;
};

struct MapGrid {
  MapProjection projection;
  MapPoint upper_left;  // centre of the first pixel
  double spacing;       // m
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
  double line_spacing = 0;     // along azimuth: s for complex images, else m
  double sample_spacing = 0;   // along range: s for complex images, else m
  double ground_velocity = 0;  // m/s, of the zero-Doppler point
  std::optional<GroundRangePolynomial> ground_range{};  // MGD
  std::optional<MapGrid> map{};                         // GEC, EEC
  Utc epoch{};
  StateTimes states{};

  Utc utc(double time) const { return epoch.after(time); }
  bool is_complex() const { return options.variant == Variant::ssc; }

  // The place that a pixel shows, and the pixel that shows a place.
  Geodetic to_ground(Pixel pixel) const;
  Pixel to_pixel(const Geodetic& place) const;

  // The place that a pixel would show if the terrain lay at the average height everywhere.
  Geodetic to_average_ground(Pixel pixel) const;

  // When and how far away what a pixel shows was seen.
  RadarPoint seen_in(Pixel pixel) const;

  // Height of the terrain: the average everywhere but in terrain-corrected products.
  double terrain_height(double latitude, double longitude) const;

  double incidence_at(const Geodetic& place) const { return incidence_angle(orbit, place); }

  // Direction of flight over ground at the centre, degrees clockwise from north.
  double heading() const;

  // Ground distances of one pixel at the centre: along azimuth and along range, m.
  Pixel ground_spacing() const;
};

// A point target: where it is and where the image shows it.
struct Target {
  std::string name;
  Geodetic place;
  Pixel pixel;
};

// Lays out a scene. Throws std::invalid_argument for what cannot be.
Scene make_scene(const Options& options);

// Targets on a regular grid inside the image, off the pixel centres; fewer in images too small for
// them.
std::vector<Target> place_targets(const Scene& scene);

// Corners: of a map-projected image its first and last line at first and last sample; of any other
// the first and last line acquired at nearest and farthest range, wherever the raster has them.
std::array<Pixel, 4> corners_of(const Scene& scene);

}  // namespace simulate
