#include "tools/gridkit/place/point_check.h"

#include <algorithm>
#include <cmath>

namespace {

using rmdllib::Ellipsoid;
using rmdllib::Geodetic;
using rmdllib::Vector3;

// Way over the ground from one place to another of the same height, in metres.
struct Offset {
  double east;
  double north;
  double length() const { return std::hypot(east, north); }
};

Offset offset(const Ellipsoid& earth, const Geodetic& from, const Geodetic& to) {
  const Vector3 way = earth.to_earth_fixed(to) - earth.to_earth_fixed(from);
  return {dot(way, Ellipsoid::east(from)), dot(way, Ellipsoid::north(from))};
}

// From the stated place, at a height, to where the pixel's sight meets that height.
Offset miss_at(const rmdllib::RadarGeometry& geometry, rmdllib::Pixel pixel,
               const ScenePoint& stated, double height) {
  return offset(geometry.earth(), {stated.latitude, stated.longitude, height},
                geometry.ground_of(pixel, height));
}

}  // namespace

double PointCheck::miss() const {
  return std::hypot(along, across);
}

PointCheck check_point(const rmdllib::RadarGeometry& geometry, rmdllib::Pixel pixel,
                       const ScenePoint& stated) {
  const Geodetic start = {stated.latitude, stated.longitude, geometry.average_height()};
  const rmdllib::RadarPoint seen = geometry.radar_of(pixel);
  const rmdllib::RadarPoint raster = geometry.raster_of(pixel);
  const Vector3 velocity = geometry.orbit().at(seen.time).velocity;
  const double speed_east = dot(velocity, Ellipsoid::east(start));
  const double speed_north = dot(velocity, Ellipsoid::north(start));
  const double speed = std::hypot(speed_east, speed_north);
  const auto along = [&](Offset o) {
    return (o.east * speed_east + o.north * speed_north) / speed;
  };
  const auto across = [&](Offset o) {
    return (o.east * speed_north - o.north * speed_east) / speed;
  };
  // The way across grows nearly in proportion to the height: the secant method ends in a few steps.
  constexpr int most_steps = 20;
  constexpr double precision = 1e-4;  // m
  double before = std::clamp(start.height, lowest_terrain, highest_terrain);
  double height = before < highest_terrain - 100 ? before + 100 : before - 100;
  double across_before = across(miss_at(geometry, pixel, stated, before));
  for (int step = 0; step < most_steps; ++step) {
    const double across_now = across(miss_at(geometry, pixel, stated, height));
    if (std::abs(across_now) < precision || across_now == across_before) break;
    const double next = height - across_now * (height - before) / (across_now - across_before);
    before = height;
    across_before = across_now;
    height = std::clamp(next, lowest_terrain, highest_terrain);
  }
  const Offset rest = miss_at(geometry, pixel, stated, height);
  constexpr double day = 86400;  // s
  return {height,
          along(rest),
          across(rest),
          miss_at(geometry, pixel, stated, geometry.average_height()).length(),
          std::remainder(raster.time - stated.azimuth_time, day),
          raster.range - stated.slant_range};
}

PointCheck check_point(const rmdllib::Placement& map, rmdllib::Pixel pixel,
                       const ScenePoint& stated) {
  const Geodetic place = {stated.latitude, stated.longitude, 0};
  const Offset rest = offset(Ellipsoid::wgs84(), place, map.ground_of(pixel, 0));
  return {0, rest.north, rest.east, rest.length(), 0, 0};
}
