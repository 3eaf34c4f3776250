#pragma once

#include <cstddef>
#include <vector>

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

// An orbit as annotations give it: states at equal times. Between them position and velocity follow
// the cubic through the two neighbouring states (Hermite); error below a millimetre for steps of 10
// s.
class Orbit {
 public:
  Orbit(double first_time, double spacing, std::vector<State> states)
      : first_time_(first_time), spacing_(spacing), states_(std::move(states)) {}

  double first_time() const { return first_time_; }
  double spacing() const { return spacing_; }
  const std::vector<State>& states() const { return states_; }

  // State at a time in seconds; outside the states by their first or last cubic.
  State at(double time) const;

 private:
  double first_time_;
  double spacing_;
  std::vector<State> states_;
};

}  // namespace simulate
