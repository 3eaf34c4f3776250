#pragma once

#include <cstdint>
#include <string>

#include "companion/geolocation_grid.h"
#include "companion/xml_walk.h"

namespace companion {

// The branches of a geolocation grid's file; the reader stands after the start tag of the branch.
// Throw Failure.

// A quantity over range time: the sum of c[i] (t - reference)^i, in seconds.
struct RangePolynomial {
  double reference = 0;
  std::vector<double> coefficients;

  double at(double range_time) const;
};

struct PropagationEffects {
  std::vector<RangePolynomial> delays;  // at least one
  std::vector<RangePolynomial> shifts;  // may be none
};

PropagationEffects read_propagation_effects(XmlWalk& walk, const std::string& element);

// The points, each of the numbered ones exactly once, with times as gkc_GridPoint has them:
// `scene_start` tells the day from which azimuth times count, `file_bytes` is what the file has for
// so many points.
GeolocationGrid read_points(XmlWalk& walk, const std::string& element,
                            const lmx::c_datetime& scene_start, std::int64_t file_bytes);

}  // namespace companion
