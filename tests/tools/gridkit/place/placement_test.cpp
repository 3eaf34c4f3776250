// The point targets of simulated products, found again through the plug-in, the host and what they
// publish alone.

#include "rmdllib/placement.h"

#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <nlohmann/json.hpp>
#include <string>

#include "gridkit/plugin.h"
#include "tests/support/scene_sites.h"
#include "tests/support/scratch_folder.h"
#include "tools/simulate/product.h"

namespace {

namespace fs = std::filesystem;
using rmdllib::Geodetic;
using rmdllib::Pixel;
using simulate::Variant;

std::shared_ptr<gridkit::Plugin> plugin() {
  static const auto loaded = gridkit::Plugin::load(TSX_PLUGIN);
  return loaded;
}

// The ellipsoid that the sensor models state: WGS 84 but for 0.245 mm of its semi-minor axis, which
// has three decimals there.
constexpr double stated_semimajor = 6378137.0;    // m
constexpr double stated_semiminor = 6356752.314;  // m

// Way between two places, in metres.
double distance(const Geodetic& a, const Geodetic& b) {
  const rmdllib::Ellipsoid earth(stated_semimajor, stated_semiminor);
  return length(earth.to_earth_fixed(a) - earth.to_earth_fixed(b));
}

class Placed : public testing::TestWithParam<SceneSite> {
 protected:
  // A stripmap scene of about that many metres along the track and at most a strip's 30 km across,
  // with images that hold nothing.
  simulate::Options options(Variant variant, double extent) const {
    simulate::Options o;
    o.variant = variant;
    o.latitude = GetParam().latitude;
    o.longitude = GetParam().longitude;
    o.pass = GetParam().pass;
    o.look = GetParam().look;
    o.start = GetParam().start;
    const double across = variant == Variant::ssc ? 2.38 : 2.75;
    const double along = variant == Variant::ssc ? 1.9 : 2.75;
    o.lines = static_cast<std::int32_t>(extent / along) + 1;
    o.samples = static_cast<std::int32_t>(std::min(extent, 30e3) / across) + 1;
    o.targets = 25;
    o.empty_images = true;
    return o;
  }

  // Every target within 0.05 pixel and 0.1 m of the truth, and every way there and back closed.
  void expect_truth(const simulate::Options& o) {
    const fs::path path = simulate::write_product_folder(o, scratch.path());
    const auto truth = nlohmann::json::parse(std::ifstream(path.parent_path() / "truth.json"));
    const rmdllib::Placement placement(plugin()->open(path));
    ASSERT_EQ(truth["targets"].size(), 25U);
    for (const auto& target : truth["targets"]) {
      const Geodetic place = {target["latitude"], target["longitude"], target["height"]};
      const Pixel pixel = {target["line"], target["sample"]};
      const Pixel seen = placement.pixel_of(place);
      const Geodetic found = placement.ground_of(pixel, place.height);
      EXPECT_NEAR(seen.line, pixel.line, 0.05) << target["name"];
      EXPECT_NEAR(seen.sample, pixel.sample, 0.05) << target["name"];
      EXPECT_LT(distance(found, place), 0.1) << target["name"];
      const Pixel back = placement.pixel_of(found);
      EXPECT_NEAR(back.line, pixel.line, 1e-6) << target["name"];
      EXPECT_NEAR(back.sample, pixel.sample, 1e-6) << target["name"];
      worst_ = std::max(worst_, distance(found, place));
    }
    fs::remove_all(path.parent_path());
  }
  void TearDown() override { RecordProperty("worst_mm", std::to_string(1000 * worst_)); }

  const ScratchFolder scratch;
  double worst_ = 0;
};

TEST_P(Placed, TargetsOfComplexScenesComeBack) {
  for (const double extent : {5e3, 50e3}) {
    SCOPED_TRACE(extent);
    expect_truth(options(Variant::ssc, extent));
  }
}

TEST_P(Placed, TargetsOfGroundRangeScenesComeBackHoweverTheRasterIsTurned) {
  for (const char* corner : {"EARLYAZNEARRG", "EARLYAZFARRG", "LATEAZNEARRG", "LATEAZFARRG"}) {
    for (const double extent : {5e3, 50e3}) {
      SCOPED_TRACE(std::string(corner) + ' ' + std::to_string(extent));
      simulate::Options o = options(Variant::mgd, extent);
      o.start_with = corner;
      expect_truth(o);
    }
  }
}

TEST_P(Placed, TargetsOfMapsComeBack) {
  for (const Variant variant : {Variant::gec, Variant::eec}) {
    simulate::Options o = options(variant, 5e3);
    o.polar_projection = std::abs(o.latitude) > 70;
    expect_truth(o);
  }
}

INSTANTIATE_TEST_SUITE_P(Sites, Placed, testing::ValuesIn(scene_sites),
                         [](const auto& site) { return site.param.what; });

class Placing : public testing::Test {
 protected:
  std::string refusal(const auto& call) {
    try {
      call();
    } catch (const gridkit::Error& error) {
      return error.what();
    }
    return "nothing was refused";
  }
  const ScratchFolder scratch;
};

TEST_F(Placing, RefusesPlacesThatTheRadarDoesNotSee) {
  simulate::Options o;
  o.lines = o.samples = 100;
  o.empty_images = true;
  const rmdllib::Placement placement(
      plugin()->open(simulate::write_product_folder(o, scratch.path())));
  // The satellite flies south and looks west: the same latitude far in the east is on its left.
  EXPECT_EQ(refusal([&] {
              placement.pixel_of({48.08, 21, 600});
            }),
            "that place lies on the side that the radar does not look to");
  EXPECT_EQ(refusal([&] {
              placement.pixel_of({-48, -169, 600});
            }),
            "that place lies on the far side of the Earth");
  // A sixth of the way around the Earth to the right of the track: the horizon of an orbit 510 km
  // high is 22 degrees away.
  const rmdllib::RadarGeometry& geometry = *placement.radar();
  const auto satellite = geometry.orbit().at(geometry.radar_of({50, 50}).time);
  const rmdllib::Vector3 up = unit(satellite.position);
  const rmdllib::Vector3 right = unit(cross(satellite.velocity, up));
  const Geodetic beyond = geometry.earth().to_geodetic(
      6.371e6 * (std::cos(M_PI / 3) * up + std::sin(M_PI / 3) * right));
  EXPECT_EQ(refusal([&] { placement.pixel_of(beyond); }),
            "that place lies beyond the satellite's horizon");
  EXPECT_EQ(refusal([&] {
              placement.pixel_of({-30, 11, 600});
            }),
            "the satellite does not come abeam of that place within its state vectors");
  EXPECT_EQ(refusal([&] {
              placement.ground_of({50, -400000}, 600);
            }),
            "the slant range does not reach that height");
}

TEST_F(Placing, TellsThePlacesOnTheImageFromThoseOutside) {
  for (const Variant variant : {Variant::ssc, Variant::mgd, Variant::gec}) {
    simulate::Options o;
    o.variant = variant;
    o.lines = 80;
    o.samples = 100;
    o.empty_images = true;
    const rmdllib::Placement placement(
        plugin()->open(simulate::write_product_folder(o, scratch.path())));
    // A map's size is the simulator's choice.
    const double lines = placement.lines();
    const double samples = placement.samples();
    if (variant != Variant::gec) {
      EXPECT_EQ(lines, 80);
      EXPECT_EQ(samples, 100);
    }
    EXPECT_TRUE(placement.contains({-0.5, -0.5}));
    EXPECT_TRUE(placement.contains({lines - 0.5, samples - 0.5}));
    EXPECT_FALSE(placement.contains({-0.51, 10}));
    EXPECT_FALSE(placement.contains({10, -0.51}));
    EXPECT_FALSE(placement.contains({lines - 0.49, 10}));
    EXPECT_FALSE(placement.contains({10, samples - 0.49}));
    EXPECT_FALSE(placement.contains({std::nan(""), 10}));
  }
}

}  // namespace
