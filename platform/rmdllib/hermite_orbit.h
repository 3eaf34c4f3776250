#pragma once

#include <cstdint>
#include <span>

namespace rmdllib {

// Position in metres and velocity in metres per second along one axis.
struct AxisState {
  double position;
  double velocity;
};

// One axis of an orbit between state vectors at equal intervals: the cubic polynomial that meets
// position and velocity at both vectors around a time (Hermite), and its derivative.
class HermiteOrbit {
 public:
  // At least two positions and as many velocities, which must outlive this; `interval` is positive,
  // in seconds.
  HermiteOrbit(std::span<const double> positions, std::span<const double> velocities,
               double interval)
      : positions_(positions), velocities_(velocities), interval_(interval) {}

  // The state `time` seconds after the first vector. Times before the first or after the last
  // vector give the state at that vector.
  AxisState at(double time) const;

 private:
  std::span<const double> positions_;
  std::span<const double> velocities_;
  double interval_;
};

}  // namespace rmdllib
