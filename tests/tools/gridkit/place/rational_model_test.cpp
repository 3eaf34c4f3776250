// Rational models of simulated scenes all over the world: how far they are from the range-Doppler
// geometry that they are fitted to, and from the simulator's own truth.

#include "rmdllib/rational_model.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>

#include "gridkit/error.h"
#include "rmdllib/placement.h"
#include "tests/support/scene_sites.h"
#include "tests/support/scratch_folder.h"
#include "tools/annotation/sensor_model_record.h"
#include "tools/gridkit/place/rational_text.h"
#include "tools/simulate/product.h"

namespace {

namespace fs = std::filesystem;
using rmdllib::FittedRationalModel;
using rmdllib::Geodetic;
using rmdllib::Pixel;
using simulate::Variant;

constexpr double goal = 0.01;  // pixel

// The RPC00B form, written out by its letters and apart from the code that is tested.
double cubic(const rmdllib::CubicTerms& coefficients, double l, double p, double h) {
  std::istringstream terms("1 L P H LP LH PH LL PP HH PLH LLL LPP LHH LLP PPP PHH LLH PPH HHH");
  double sum = 0;
  std::string letters;
  for (const double coefficient : coefficients) {
    terms >> letters;
    double product = coefficient;
    for (const char letter : letters) {
      product *= letter == 'L' ? l : letter == 'P' ? p : letter == 'H' ? h : 1;
    }
    sum += product;
  }
  return sum;
}

Pixel by_the_letters(const rmdllib::RationalModel& model, const Geodetic& place) {
  const double l =
      std::remainder(place.longitude_degrees - model.longitude.offset, 360) / model.longitude.scale;
  const double p = (place.latitude_degrees - model.latitude.offset) / model.latitude.scale;
  const double h = (place.height - model.height.offset) / model.height.scale;
  const auto value = [&](const rmdllib::Normalisation& unit, const auto& function) {
    return unit.offset +
           unit.scale * cubic(function.numerator, l, p, h) / cubic(function.denominator, l, p, h);
  };
  return {value(model.line, model.line_function), value(model.sample, model.sample_function)};
}

class RationalModels : public testing::Test {
 protected:
  rmdllib::RadarGeometry geometry_of(const simulate::Options& options) {
    const fs::path path = simulate::write_product_folder(options, scratch.path());
    truth = nlohmann::json::parse(std::ifstream(path.parent_path() / "truth.json"));
    const rmdllib::Placement placement(sensor_model_record(path.string()).value());
    fs::remove_all(path.parent_path());
    return *placement.radar();
  }

  // About that many metres along the track, and a swath of at most 30 km.
  static simulate::Options options(const SceneSite& site, Variant variant, double extent) {
    simulate::Options o;
    o.variant = variant;
    o.latitude = site.latitude;
    o.longitude = site.longitude;
    o.pass = site.pass;
    o.look = site.look;
    o.start = site.start;
    o.lines = static_cast<std::int32_t>(extent / (variant == Variant::ssc ? 1.9 : 2.75)) + 1;
    o.samples = static_cast<std::int32_t>(std::min(extent, 30e3) / 2.75) + 1;
    o.targets = 25;
    o.empty_images = true;
    return o;
  }

  // Tells the errors, and holds them against the goal and the simulator's truth.
  void expect_goal(const std::string& what, const simulate::Options& o) {
    const rmdllib::RadarGeometry geometry = geometry_of(o);
    const FittedRationalModel fitted = rmdllib::fit_rational_model(geometry);
    std::printf("%-34s %6d x %6d  line %.2e  sample %.2e pixel\n", what.c_str(), o.lines, o.samples,
                fitted.largest_line_error, fitted.largest_sample_error);
    EXPECT_LT(fitted.largest_line_error, goal) << what;
    EXPECT_LT(fitted.largest_sample_error, goal) << what;
    EXPECT_EQ(remark_on(fitted), "");
    // The truth's targets lie at the scene's heights; the sensor model itself is within 0.05 of it.
    for (const auto& target : truth["targets"]) {
      const Geodetic place = {target["latitude"], target["longitude"], target["height"]};
      const Pixel seen = by_the_letters(fitted.model, place);
      EXPECT_NEAR(seen.line, target["line"].get<double>(), 0.05) << what;
      EXPECT_NEAR(seen.sample, target["sample"].get<double>(), 0.05) << what;
      const Pixel own = fitted.model.pixel_of(place);
      EXPECT_NEAR(seen.line, own.line, 1e-6) << what;
      EXPECT_NEAR(seen.sample, own.sample, 1e-6) << what;
    }
    ++scenes;
  }

  const ScratchFolder scratch;
  nlohmann::json truth;
  int scenes = 0;
};

TEST_F(RationalModels, KeepTheirGoalInScenesOfUpTo60KilometresAllOverTheWorld) {
  for (const SceneSite& site : scene_sites) {
    for (const double extent : {10e3, 60e3}) {
      const std::string km = " " + std::to_string(static_cast<int>(extent / 1000)) + " km";
      expect_goal(site.what + km + " SSC", options(site, Variant::ssc, extent));
      simulate::Options turned = options(site, Variant::mgd, extent);
      turned.start_with = extent > 30e3 ? "LATEAZFARRG" : "EARLYAZNEARRG";
      expect_goal(site.what + km + " MGD", turned);
    }
  }
  for (const double incidence : {20.0, 55.0}) {
    for (const Variant variant : {Variant::ssc, Variant::mgd}) {
      simulate::Options o = options(scene_sites[0], variant, 60e3);
      o.incidence = incidence;
      expect_goal("incidence " + std::to_string(static_cast<int>(incidence)), o);
    }
  }
  simulate::Options spotlight = options(scene_sites[2], Variant::ssc, 10e3);
  spotlight.mode = simulate::Mode::spotlight;
  expect_goal("spotlight", spotlight);
  EXPECT_EQ(scenes, 45);
}

TEST_F(RationalModels, ServeTheHeightsThatAreAskedFor) {
  const rmdllib::RadarGeometry geometry = geometry_of(options(scene_sites[0], Variant::ssc, 10e3));
  const FittedRationalModel fitted = rmdllib::fit_rational_model(geometry, {100, 300});
  EXPECT_EQ(fitted.heights.lowest, 100);
  EXPECT_EQ(fitted.heights.highest, 300);
  EXPECT_EQ(fitted.model.height.offset, 200);
  EXPECT_EQ(fitted.model.height.scale, 100);
  EXPECT_LT(fitted.largest_line_error, 1e-5);
  EXPECT_LT(fitted.largest_sample_error, 1e-5);
}

// The errors that are told are those that a caller meets: between the nodes, at the edges and at
// both ends of the heights none is larger.
TEST_F(RationalModels, TellErrorsThatHoldEverywhereInTheImage) {
  const rmdllib::RadarGeometry geometry = geometry_of(options(scene_sites[9], Variant::ssc, 60e3));
  const FittedRationalModel fitted = rmdllib::fit_rational_model(geometry);
  double line_error = 0;
  double sample_error = 0;
  constexpr int steps = 36;
  for (int row = 0; row <= steps; ++row) {
    for (int column = 0; column <= steps; ++column) {
      for (const double height : {-500.0, -17.0, 1333.0, 4250.0, 8123.0, 9000.0}) {
        const Pixel pixel = {(geometry.lines() - 1) * row / steps,
                             (geometry.samples() - 1) * column / steps};
        const Pixel seen = fitted.model.pixel_of(geometry.ground_of(pixel, height));
        line_error = std::max(line_error, std::abs(seen.line - pixel.line));
        sample_error = std::max(sample_error, std::abs(seen.sample - pixel.sample));
      }
    }
  }
  EXPECT_LE(line_error, 1.1 * fitted.largest_line_error);
  EXPECT_LE(sample_error, 1.1 * fitted.largest_sample_error);
  EXPECT_GT(line_error, 0.3 * fitted.largest_line_error);
  EXPECT_GT(sample_error, 0.3 * fitted.largest_sample_error);
}

// Ground range bends most where the radar looks down steeply: at 16 degrees of incidence a swath of
// 30 km is too much for cubics.
TEST_F(RationalModels, ThatMissTheirGoalSaySo) {
  simulate::Options o = options(scene_sites[0], Variant::mgd, 60e3);
  o.incidence = 16;
  const FittedRationalModel fitted = rmdllib::fit_rational_model(geometry_of(o));
  EXPECT_LT(fitted.largest_line_error, goal);
  EXPECT_GT(fitted.largest_sample_error, goal);
  EXPECT_LT(fitted.largest_sample_error, 0.1);
  EXPECT_NE(remark_on(fitted), "");
  EXPECT_EQ(
      remark_on({{}, {}, 0.005, 1.2345}),
      "the rational model is off by up to 0.005 lines and 1.23 samples, more than 0.01 pixel");
  EXPECT_EQ(remark_on({{}, {}, 0.0123, 0}),
            "the rational model is off by up to 0.0123 lines and 0 samples, more than 0.01 pixel");
  EXPECT_EQ(remark_on({{}, {}, 0.01, 0.01}), "");
}

TEST_F(RationalModels, RefuseHeightsThatAreNoRange) {
  const rmdllib::RadarGeometry geometry = geometry_of(options(scene_sites[0], Variant::ssc, 1e3));
  const auto refusal = [&](rmdllib::HeightRange heights) -> std::string {
    try {
      rmdllib::fit_rational_model(geometry, heights);
    } catch (const gridkit::Error& error) {
      return error.what();
    }
    return "nothing was refused";
  };
  const char* no_range = "the heights of a rational model must rise from a lowest to a highest";
  EXPECT_EQ(refusal({5, 5}), no_range);
  EXPECT_EQ(refusal({5, 4}), no_range);
  EXPECT_EQ(refusal({std::nan(""), 4}), no_range);
  EXPECT_EQ(refusal({0, INFINITY}), no_range);
  EXPECT_EQ(refusal({-500, 5e6}), "the slant range does not reach that height");
}

}  // namespace
