#include "tools/simulate/ground_range.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

#include "tools/simulate/range_doppler.h"

namespace simulate {

namespace {

// Least squares of degree 5 over samples (x in [0, 1], y), without a constant term.
std::array<double, 6> fit_through_zero(const std::vector<double>& x, const std::vector<double>& y) {
  constexpr std::size_t n = 5;
  std::array<std::array<long double, n + 1>, n> a{};
  for (std::size_t k = 0; k < x.size(); ++k) {
    std::array<long double, n> powers{};
    long double p = 1;
    for (auto& power : powers) power = p *= x[k];
    for (std::size_t i = 0; i < n; ++i) {
      for (std::size_t j = 0; j < n; ++j) a[i][j] += powers[i] * powers[j];
      a[i][n] += powers[i] * static_cast<long double>(y[k]);
    }
  }
  for (std::size_t i = 0; i < n; ++i) {
    for (std::size_t r = 0; r < n; ++r) {
      if (r == i) continue;
      const long double factor = a[r][i] / a[i][i];
      for (std::size_t c = i; c <= n; ++c) a[r][c] -= factor * a[i][c];
    }
  }
  std::array<double, 6> coefficients{};
  for (std::size_t i = 0; i < n; ++i) {
    coefficients[i + 1] = static_cast<double>(a[i][n] / a[i][i]);
  }
  return coefficients;
}

// Along the line of sight's trace on the ground, as the sum of short chords: 60 of them for 50 km
// miss the arc by less than 0.1 mm.
GroundRangePolynomial fit_between(const Orbit& orbit, const Geodetic& centre, double near_range,
                                  double far_range) {
  constexpr int segments = 60;
  std::vector<double> x;
  std::vector<double> y;
  Vector3 before{};
  double distance = 0;
  Geodetic place = centre;
  for (int i = 0; i <= segments; ++i) {
    const double fraction = static_cast<double>(i) / segments;
    const double range = near_range + fraction * (far_range - near_range);
    place = to_ground(orbit, {0, range}, centre.height, place);
    const Vector3 here = to_earth_fixed(place);
    if (i > 0) distance += length(here - before);
    before = here;
    x.push_back(fraction);
    y.push_back(distance);
  }
  GroundRangePolynomial fitted{delay_of(near_range), delay_of(far_range), fit_through_zero(x, y)};
  double scale = 1;
  for (double& c : fitted.coefficients) {
    c /= scale;
    scale *= fitted.last - fitted.reference;
  }
  return fitted;
}

}  // namespace

double GroundRangePolynomial::ground_range(double time) const {
  const double d = time - reference;
  double sum = 0;
  for (auto c = coefficients.rbegin(); c != coefficients.rend(); ++c) sum = sum * d + *c;
  return sum;
}

double GroundRangePolynomial::slant_time(double ground) const {
  double time = reference + ground / coefficients[1];
  for (int i = 0; i < 40; ++i) {
    const double d = time - reference;
    double slope = 0;
    for (std::size_t k = 5; k >= 1; --k) {
      slope = slope * d + static_cast<double>(k) * coefficients[k];
    }
    const double miss = ground_range(time) - ground;
    time -= miss / slope;
    if (std::abs(miss) < 1e-9) break;
  }
  return time;
}

GroundRangePolynomial fit_ground_range(const Orbit& orbit, const Swath& swath) {
  const double middle = to_radar(orbit, swath.centre).range;
  const double slope = std::sin(incidence_angle(orbit, swath.centre));
  const double half = swath.extent / 2;
  // As wide as a stripmap's swath at least, whatever the image shows of it: over a short piece the
  // high coefficients would be noise. Slant range grows faster on the far side than at the centre;
  // a quarter more holds all of it.
  constexpr double usual_swath = 30000;
  const double far_range = middle + (std::max(swath.extent, usual_swath) - half) * slope * 1.25;
  double near_range = middle - half * slope;
  GroundRangePolynomial fitted;
  for (int i = 0; i < 20; ++i) {
    fitted = fit_between(orbit, swath.centre, near_range, far_range);
    const double miss = fitted.ground_range(delay_of(middle)) - half;
    if (std::abs(miss) < 1e-3) break;
    near_range += miss * slope;
  }
  return fitted;
}

}  // namespace simulate
