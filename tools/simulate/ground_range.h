#pragma once

#include <array>

#include "tools/simulate/orbit.h"

namespace simulate {

// Ground range from slant range time: sum of coefficients[k] * (time - reference)^k, in metres, 0
// at the reference.
struct GroundRangePolynomial {
  double reference = 0;  // s, two-way, of the nearest pixel
  double last = 0;       // s, end of validity
  std::array<double, 6> coefficients{};

  double ground_range(double time) const;
  double slant_time(double ground) const;  // the inverse, by Newton's method to 1e-9 m
};

// What a detected image's swath has to be.
struct Swath {
  Geodetic centre;    // in the middle of the swath, on its ellipsoid height
  double extent = 0;  // m on ground, from the nearest to the farthest pixel
};

// Fits degree 5 to the ground range along the line seen at the orbit's time 0, at the centre's
// height, over the image's swath or 30 km where that is more; the misfit stays below a millimetre
// for 50 km. The centre comes to lie in the middle of the image to a millimetre.
GroundRangePolynomial fit_ground_range(const Orbit& orbit, const Swath& swath);

}  // namespace simulate
