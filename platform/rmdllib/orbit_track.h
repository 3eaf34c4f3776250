#pragma once

#include <vector>

#include "gridkit/export.h"
#include "rmdllib/vector3.h"

namespace rmdllib {

// A satellite's motion at one moment, Earth-fixed: metres and seconds.
struct Motion {
  Vector3 position;
  Vector3 velocity;
  Vector3 acceleration;
};

// An orbit from state vectors at equal intervals. Between them the track is the polynomial through
// the positions and velocities of the nearest four (degree 7), or of all where there are fewer. For
// a low orbit with vectors 10 s apart it is as exact as the vectors: to 20 nanometres, and to a
// micrometre up to half an interval beyond them (tests/platform/rmdllib/solver_truth.txt).
class GRIDKIT_API OrbitTrack {
 public:
  // Times in seconds. Throws gridkit::Error for fewer than two vectors, arrays of different sizes,
  // an interval that is not positive, or a number that is not finite.
  OrbitTrack(double first_time, double interval, std::vector<Vector3> positions,
             std::vector<Vector3> velocities);

  double first_time() const { return first_time_; }
  double interval() const { return interval_; }
  double last_time() const;

  // Beyond the vectors the outermost polynomial goes on.
  Motion at(double time) const;

 private:
  double first_time_;
  double interval_;
  std::vector<Vector3> positions_;
  std::vector<Vector3> velocities_;
};

}  // namespace rmdllib
