#pragma once

#include "tools/simulate/orbit.h"

namespace simulate {

// Zero-Doppler radar coordinates: when the place is abeam, and how far away.
struct RadarPoint {
  double time = 0;   // s, of the orbit's time scale
  double range = 0;  // m, slant range
};

// Two-way delay of a slant range, in seconds, and back.
inline double delay_of(double range) {
  return 2 * range / speed_of_light;
}
inline double range_of(double delay) {
  return delay * speed_of_light / 2;
}

// Where a place on Earth is seen. Newton's method on the Doppler equation, to 1e-11 s.
RadarPoint to_radar(const Orbit& orbit, const Geodetic& place);

// The place at a height above the ellipsoid that is seen there, on that side. Newton's method on
// range, Doppler and height, to 1e-6 m. `near` is any place of the scene, to start from. Throws
// std::domain_error when the range does not reach that height.
Geodetic to_ground(const Orbit& orbit, RadarPoint point, double height, const Geodetic& near);

// Angle between the line of sight and the ellipsoid's normal at a place, in radians.
double incidence_angle(const Orbit& orbit, const Geodetic& place);

}  // namespace simulate
