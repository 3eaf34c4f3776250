#pragma once

#include "tools/simulate/wgs84.h"

namespace simulate {

// Position and velocity in metres and metres per second.
struct State {
  Vector3 position;
  Vector3 velocity;
};

enum class Pass { ascending, descending };
enum class Look { right, left };

// What an orbit has to bring about: the place is seen at zero Doppler at time 0, on that side,
// under that incidence angle.
struct Acquisition {
  Geodetic place;
  Pass pass = Pass::ascending;
  Look look = Look::right;
  double incidence = 0.6;  // rad, between the line of sight and the ellipsoid's normal
};

// Finds the satellite's Earth-fixed state at time 0 on a near-circular sun-synchronous orbit of 514
// km. Throws std::invalid_argument for a place that the orbit cannot see that way (near the poles).
State solve_acquisition(const Acquisition& acquisition);

// Moves an Earth-fixed state through `seconds`: two-body motion with the second zonal harmonic,
// Runge-Kutta of fourth order in steps of at most one second in the frame that does not rotate.
State propagate(const State& earth_fixed, double seconds);

// The orbit of an acquisition: the state at time 0, propagated.
class Orbit {
 public:
  explicit Orbit(const State& at_zero) : at_zero_(at_zero) {}

  // Earth-fixed state at any time in seconds, to below a micrometre within minutes.
  State at(double time) const { return propagate(at_zero_, time); }

 private:
  State at_zero_;
};

}  // namespace simulate
