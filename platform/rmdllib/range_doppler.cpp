#include "rmdllib/range_doppler.h"

#include <cmath>

#include "gridkit/error.h"

namespace rmdllib {

namespace {

constexpr int most_steps = 30;

// Solves the three equations row . x = value.
Vector3 solve(const Vector3 (&row)[3], Vector3 value) {
  const Vector3 a = cross(row[1], row[2]);
  const Vector3 b = cross(row[2], row[0]);
  const Vector3 c = cross(row[0], row[1]);
  return (1 / dot(row[0], a)) * (value.x * a + value.y * b + value.z * c);
}

// Where the range would end on a sphere: a start that Newton's method ends well from.
Vector3 on_a_sphere(const Motion& satellite, const Ellipsoid& earth, LookSide side, double range,
                    double height) {
  const double distance = length(satellite.position);
  const double radius = earth.radius_below(satellite.position) + height;
  const double cosine =
      (distance * distance + range * range - radius * radius) / (2 * distance * range);
  if (!(std::abs(cosine) <= 1)) {
    throw gridkit::Error("the slant range does not reach that height");
  }
  const Vector3 up = unit(satellite.position);
  const Vector3 right = unit(cross(satellite.velocity, up));
  const double sine = std::sqrt(1 - cosine * cosine) * (side == LookSide::right ? 1 : -1);
  return satellite.position + range * (sine * right - cosine * up);
}

}  // namespace

RadarPoint to_radar(const OrbitTrack& orbit, const Ellipsoid& earth, const Geodetic& place,
                    double start_time) {
  constexpr double precision = 1e-12;  // s, a hundredth of a micrometre on the ground
  const Vector3 target = earth.to_earth_fixed(place);
  const double earliest = orbit.first_time() - orbit.interval();
  const double latest = orbit.last_time() + orbit.interval();
  double time = start_time;
  for (int i = 0; i < most_steps; ++i) {
    const Motion satellite = orbit.at(time);
    const Vector3 sight = target - satellite.position;
    const double doppler = dot(satellite.velocity, sight);
    const double slope =
        dot(satellite.acceleration, sight) - dot(satellite.velocity, satellite.velocity);
    const double step = doppler / slope;
    time -= step;
    if (!(time >= earliest && time <= latest)) break;
    if (std::abs(step) > precision + std::abs(time) * 4e-16) continue;
    return {time, length(target - orbit.at(time).position)};
  }
  throw gridkit::Error("the satellite does not come abeam of that place within its state vectors");
}

Geodetic to_ground(const OrbitTrack& orbit, const Ellipsoid& earth, LookSide side, RadarPoint point,
                   double height) {
  constexpr double precision = 2e-8;  // m, some units in the last place of an Earth radius
  const Motion satellite = orbit.at(point.time);
  Vector3 position = on_a_sphere(satellite, earth, side, point.range, height);
  for (int i = 0; i < most_steps; ++i) {
    const Vector3 sight = position - satellite.position;
    const Geodetic place = earth.to_geodetic(position);
    const double distance = length(sight);
    const Vector3 rows[] = {(1 / distance) * sight, unit(satellite.velocity), Ellipsoid::up(place)};
    const Vector3 step =
        solve(rows, {point.range - distance, -dot(rows[1], sight), height - place.height});
    position = position + step;
    if (!std::isfinite(length(position))) break;
    if (length(step) >= precision) continue;
    const Geodetic found = earth.to_geodetic(position);
    return {found.latitude_degrees, found.longitude_degrees, height};
  }
  throw gridkit::Error("the slant range does not reach that height");
}

}  // namespace rmdllib
