#include "rmdllib/rational_model.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "gridkit/error.h"
#include "gridkit/record_decoder.h"
#include "rmdllib/radar_generic_model.h"

namespace {

using rmdllib::LookSide;

// Line 100 + 10 (2 L + H) / (1 + P / 2), sample 200 + 5 P.
TEST(RationalModel, IsTheQuotientOfItsPolynomials) {
  rmdllib::RationalModel model;
  model.line = {100, 10};
  model.sample = {200, 5};
  model.latitude = {48, 2};
  model.longitude = {179, 4};
  model.height = {500, 1000};
  model.line_function.numerator[1] = 2;
  model.line_function.numerator[3] = 1;
  model.line_function.denominator[0] = 1;
  model.line_function.denominator[2] = 0.5;
  model.sample_function.numerator[2] = 1;
  model.sample_function.denominator[0] = 1;
  // L = 2 / 4, P = 1 / 2, H = -0.25: 10 * 0.75 / 1.25 = 6 lines, 2.5 samples.
  for (const double longitude : {181.0, -179.0, 541.0}) {
    const rmdllib::Pixel pixel = model.pixel_of({49, longitude, 250});
    EXPECT_NEAR(pixel.line, 106, 1e-12) << longitude;
    EXPECT_NEAR(pixel.sample, 202.5, 1e-12) << longitude;
  }
}

// A circle 514 km above the equator's radius whose plane leans 4 degrees away from the poles, in a
// frame that stands still: northernmost at time 0.
struct PolarOrbit {
  static constexpr double radius = 6892e3;
  static constexpr double rate = 0.0011;
  std::vector<double> axes[6];  // positions, then velocities

  PolarOrbit() {
    const double lean = 4 * M_PI / 180;
    for (double time = first; time <= -first; time += interval) {
      const double s = std::sin(rate * time);
      const double c = std::cos(rate * time);
      const double state[] = {radius * c * std::sin(lean), radius * s,
                              radius * c * std::cos(lean), -radius * rate * s * std::sin(lean),
                              radius * rate * c,           -radius * rate * s * std::cos(lean)};
      for (std::size_t i = 0; i < 6; ++i) axes[i].push_back(state[i]);
    }
  }
  static constexpr double first = -60;
  static constexpr double interval = 10;
};

// An image of the orbit's left or right, with so many lines at 2 ms from 2 s before the
// northernmost point on, whose middle is at a slant range.
rmdllib::RadarGeometry geometry_of(const PolarOrbit& orbit, LookSide side, double slant_range) {
  const gridkit::EnumerationItem increase = {RMDL_INCREASE, "RMDL_INCREASE"};
  const std::vector<gridkit::DecodedField> model = {
      {"num_lines", std::int32_t{2001}},
      {"num_samples", std::int32_t{2001}},
      {"image_start_time", 1000 - 2.0},
      {"image_duration", 4.0},
      {"near_slant_range", slant_range - 10e3},
      {"range_pix_spacing", 10.0},
      {"projection", static_cast<std::int32_t>(rmdl_slant_range)},
      {"time_dir_lines", increase},
      {"time_dir_pixels", increase},
      {"gnd2slt_coeffs", std::vector<double>(6)},
      {"look_side", side == LookSide::left ? -90.0 : 90.0},
      {"target_height", 0.0},
      {"semimajor", 6378137.0},
      {"semiminor", 6356752.314245},
      {"time_interval", PolarOrbit::interval},
      {"first_pt_secs_of_day", 1000 + PolarOrbit::first},
      {"rsx", orbit.axes[0]},
      {"rsy", orbit.axes[1]},
      {"rsz", orbit.axes[2]},
      {"vsx", orbit.axes[3]},
      {"vsy", orbit.axes[4]},
      {"vsz", orbit.axes[5]},
  };
  return rmdllib::RadarGeometry(model);
}

// The pole is abeam of the northernmost point, on one of the sides, at the distance of the two.
TEST(RationalModel, IsRefusedForAnImageAroundAPole) {
  const double lean = 4 * M_PI / 180;
  const double pole = 6356752.314245;
  const double range =
      std::hypot(PolarOrbit::radius * std::sin(lean), PolarOrbit::radius * std::cos(lean) - pole);
  const PolarOrbit orbit;
  // The satellite flies along +y over +x; the pole lies to -x, its left as seen from above.
  const rmdllib::RadarGeometry around = geometry_of(orbit, LookSide::left, range);
  EXPECT_GT(around.ground_of({1000, 1000}, 0).latitude_degrees, 89.99);
  try {
    fit_rational_model(around, {-100, 100});
    FAIL() << "was fitted";
  } catch (const gridkit::Error& error) {
    EXPECT_STREQ(
        error.what(),
        "the image lies around a pole, where latitude and longitude carry no rational model");
  }
  const rmdllib::RadarGeometry away = geometry_of(orbit, LookSide::right, range);
  EXPECT_LT(away.ground_of({1000, 1000}, 0).latitude_degrees, 83);
  const rmdllib::FittedRationalModel fitted = fit_rational_model(away, {-100, 100});
  EXPECT_LT(fitted.largest_line_error, 0.01);
  EXPECT_LT(fitted.largest_sample_error, 0.01);
}

}  // namespace
