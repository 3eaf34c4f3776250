#include "tools/simulate/range_doppler.h"

#include <stdexcept>

namespace simulate {

RadarPoint to_radar(const Orbit& orbit, const Geodetic& place) {
  const Vector3 target = to_earth_fixed(place);
  double time = 0;
  for (int i = 0; i < 50; ++i) {
    const State s = orbit.at(time);
    const Vector3 sight = target - s.position;
    // d/dt (sight . v) = sight . a - v . v; the first term is small beside the second.
    const double step = dot(sight, s.velocity) / dot(s.velocity, s.velocity);
    time += step;
    if (std::abs(step) < 1e-11) break;
  }
  return {time, length(target - orbit.at(time).position)};
}

Geodetic to_ground(const Orbit& orbit, RadarPoint point, double height, const Geodetic& near) {
  const State s = orbit.at(point.time);
  Vector3 p = to_earth_fixed({near.latitude_radians, near.longitude_radians, height});
  for (int i = 0; i < 60; ++i) {
    const Geodetic place = to_geodetic(p);
    const Vector3 sight = p - s.position;
    const double range = length(sight);
    const double f1 = range - point.range;
    const double f2 = dot(sight, s.velocity) / length(s.velocity);
    const double f3 = place.height - height;
    if (std::abs(f1) < 1e-6 && std::abs(f2) < 1e-6 && std::abs(f3) < 1e-6) return place;
    // Rows: gradients of range, Doppler and height. Solved by Cramer's rule.
    const Vector3 g1 = 1 / range * sight;
    const Vector3 g2 = unit(s.velocity);
    const Vector3 g3 = up_at(place);
    const double determinant = dot(g1, cross(g2, g3));
    p = p - 1 / determinant * (f1 * cross(g2, g3) + f2 * cross(g3, g1) + f3 * cross(g1, g2));
  }
  throw std::domain_error("no place at that height is seen at that range");
}

double incidence_angle(const Orbit& orbit, const Geodetic& place) {
  const RadarPoint seen = to_radar(orbit, place);
  const Vector3 sight = orbit.at(seen.time).position - to_earth_fixed(place);
  return std::acos(dot(unit(sight), up_at(place)));
}

}  // namespace simulate
