// Orbits and range-Doppler geometry of simulated scenes, all round the Earth.

#include <gtest/gtest.h>

#include "tools/simulate/scene.h"

namespace {

using namespace simulate;

TEST(Ellipsoid, PlacesComeBack) {
  for (const double lat : {-89.9, -45.0, 0.0, 30.0, 89.9}) {
    const Geodetic place{lat * degree, 2.5, 1234};
    const Geodetic back = to_geodetic(to_earth_fixed(place));
    EXPECT_NEAR(back.latitude_radians, place.latitude_radians, 1e-14);
    EXPECT_NEAR(back.longitude_radians, place.longitude_radians, 1e-14);
    EXPECT_NEAR(back.height, place.height, 1e-7);
  }
}

// Without the Earth's turning, energy changes only as the second zonal harmonic moves it: over a
// full turn it comes back. Kepler's third law gives the period, 2 pi sqrt(a^3 / GM).
TEST(Propagation, KeepsEnergyAndPeriod) {
  const State start = solve_acquisition({{0.8, 0.2, 0}, Pass::ascending, Look::right, 0.6});
  const Vector3 spin{0, 0, wgs84::rotation};
  const auto inertial_speed = [&](const State& s) {
    return length(s.velocity + cross(spin, s.position));
  };
  const auto energy = [&](const State& s) {
    const double r = length(s.position);
    const double sine = s.position.z / r;
    const double oblate =
        1 - wgs84::j2 * std::pow(wgs84::semimajor / r, 2) * (1.5 * sine * sine - 0.5);
    return inertial_speed(s) * inertial_speed(s) / 2 - wgs84::gravity / r * oblate;
  };
  const double a = length(start.position);
  const double period = 2 * std::numbers::pi * std::sqrt(a * a * a / wgs84::gravity);
  for (const double part : {0.1, 0.5, 1.0}) {
    const State later = propagate(start, part * period);
    EXPECT_NEAR(energy(later) / energy(start), 1, 1e-10) << part;
  }
  const State after = propagate(start, period);
  // The harmonic changes the period by a few parts of itself: 3 J2 of a circumference is 141 km.
  EXPECT_NEAR(after.position.z, start.position.z, 3 * wgs84::j2 * 2 * std::numbers::pi * a);
}

struct Place {
  const char* what;
  double latitude;
  double longitude;
  Pass pass;
  Look look;
  const char* start;
};

// For the listing of tests.
void PrintTo(const Place& place, std::ostream* out) {
  *out << place.what;
}

class Worldwide : public testing::TestWithParam<Place> {
 protected:
  Options options(Variant variant) const {
    Options o;
    o.variant = variant;
    o.latitude = GetParam().latitude;
    o.longitude = GetParam().longitude;
    o.pass = GetParam().pass;
    o.look = GetParam().look;
    o.start = GetParam().start;
    o.lines = 2000;
    o.samples = 1500;
    o.polar_projection = std::abs(o.latitude) > 75;
    return o;
  }
};

TEST_P(Worldwide, TheSceneIsSeenAsAskedFor) {
  const Scene scene = make_scene(options(Variant::ssc));
  const RadarPoint middle = to_radar(scene.orbit, scene.centre);
  EXPECT_NEAR(middle.time, 0, 1e-6);
  EXPECT_NEAR(scene.incidence_at(scene.centre) / degree, scene.options.incidence, 1e-6);
  const State s = scene.orbit.at(0);
  const bool on_right =
      dot(to_earth_fixed(scene.centre) - s.position, cross(s.velocity, s.position)) > 0;
  EXPECT_EQ(on_right, GetParam().look == Look::right);
  EXPECT_EQ(s.velocity.z > 0, GetParam().pass == Pass::ascending);
}

TEST_P(Worldwide, StateVectorsStandAtWholeSecondsAroundTheScene) {
  for (const Variant variant : {Variant::ssc, Variant::mgd, Variant::gec}) {
    const Scene scene = make_scene(options(variant));
    EXPECT_EQ(scene.states.count, 12U);
    EXPECT_EQ(scene.states.spacing, 10);
    EXPECT_EQ(scene.utc(scene.states.first).fraction(), 0);
    EXPECT_LE(scene.states.first, scene.start - 50);
    EXPECT_GT(scene.states.first, scene.start - 51.001);
    EXPECT_GT(scene.states.at(11), scene.stop + 40);
  }
}

TEST_P(Worldwide, ScenesBeginWhenAskedForAndTheirTimesAreWholeMicroseconds) {
  for (const Variant variant : {Variant::ssc, Variant::mgd, Variant::gec}) {
    const Scene scene = make_scene(options(variant));
    EXPECT_EQ(scene.utc(scene.start).text(), Utc::parse(scene.options.start).text());
    for (const double time : {scene.start, scene.stop}) {
      EXPECT_NEAR(scene.utc(time).since(scene.epoch), time, 1e-15);
    }
  }
}

TEST_P(Worldwide, PixelsAndGroundCloseInEveryVariant) {
  for (const Variant variant : {Variant::ssc, Variant::mgd, Variant::gec, Variant::eec}) {
    const Scene scene = make_scene(options(variant));
    for (const Pixel pixel : {Pixel{0, 0}, {0, 1499}, {1999, 0}, {1999, 1499}, {777.25, 333.5}}) {
      const Pixel back = scene.to_pixel(scene.to_ground(pixel));
      EXPECT_NEAR(back.line, pixel.line, 1e-6) << static_cast<int>(variant);
      EXPECT_NEAR(back.sample, pixel.sample, 1e-6) << static_cast<int>(variant);
    }
  }
}

TEST_P(Worldwide, TargetsAreWhereTheStateVectorsSeeThem) {
  const Scene scene = make_scene(options(Variant::ssc));
  for (const Target& target : place_targets(scene)) {
    const RadarPoint seen = to_radar(scene.orbit, target.place);
    // At zero Doppler the line of sight stands square on the velocity.
    const State s = scene.orbit.at(seen.time);
    const Vector3 sight = to_earth_fixed(target.place) - s.position;
    EXPECT_NEAR(dot(unit(sight), unit(s.velocity)), 0, 1e-12);
    EXPECT_NEAR((seen.time - scene.start) * scene.prf, target.pixel.line, 1e-5);
    EXPECT_NEAR((2 * seen.range / speed_of_light - scene.near_time) * scene.rsf,
                target.pixel.sample, 1e-5);
  }
}

INSTANTIATE_TEST_SUITE_P(
    Places, Worldwide,
    testing::Values(
        Place{"north", 48, 11, Pass::descending, Look::right, "2008-03-10T13:32:20"},
        Place{"left", 48, 11, Pass::ascending, Look::left, "2008-03-10T13:32:20"},
        Place{"south", -33, 18, Pass::ascending, Look::right, "2010-01-01T05:00:00"},
        Place{"southleft", -33, 18, Pass::descending, Look::left, "2010-01-01T05:00:00"},
        Place{"dateline", 10, 179.999, Pass::ascending, Look::right, "2012-06-30T12:00:00"},
        Place{"datelinewest", -10, -179.999, Pass::descending, Look::right, "2012-06-30T12:00:00"},
        Place{"midnight", 60, 25, Pass::ascending, Look::right, "2008-12-31T23:59:59.9"},
        Place{"polar", 78, 15, Pass::ascending, Look::right, "2008-07-01T00:00:00"}),
    [](const auto& place) { return place.param.what; });

TEST(StateTimes, CoverScenesThatLastLonger) {
  Options o;
  o.variant = Variant::gec;
  o.lines = o.samples = 40000;
  const Scene scene = make_scene(o);
  EXPECT_GT(scene.stop - scene.start, 14);
  EXPECT_GT(scene.states.at(scene.states.count - 1), scene.stop + 40);
}

TEST(GroundRange, HasTheCentreInTheMiddleOfWideSwaths) {
  Options o;
  o.variant = Variant::mgd;
  o.samples = 18182;
  const Scene scene = make_scene(o);
  const double delay = delay_of(to_radar(scene.orbit, scene.centre).range);
  EXPECT_NEAR(scene.ground_range->ground_range(delay), 18181 * 2.75 / 2, 2e-3);
}

// Along the ellipsoid the distance grows by range / (ground radius x sine of incidence); here by
// places on ground 500 m of slant range apart, 30 km on from an image of 5 km.
TEST(GroundRange, HoldsFarBeyondASmallImage) {
  Options o;
  o.variant = Variant::mgd;
  o.samples = 1819;
  const Scene scene = make_scene(o);
  const double near_range = range_of(scene.near_time);
  double ground = 0;
  Vector3 before = to_earth_fixed(to_ground(scene.orbit, {0, near_range}, o.height, scene.centre));
  for (int i = 1; i <= 35; ++i) {
    const double range = near_range + 500 * i;
    const Vector3 here = to_earth_fixed(to_ground(scene.orbit, {0, range}, o.height, scene.centre));
    ground += length(here - before);
    before = here;
    // A chord of 900 m is 1 um short of its arc.
    EXPECT_NEAR(scene.ground_range->ground_range(delay_of(range)), ground, 1e-3) << i;
  }
  EXPECT_GT(ground, 29000);
}

TEST(GroundRange, FollowsTheEllipsoid) {
  Options o;
  o.variant = Variant::mgd;
  const Scene scene = make_scene(o);
  // Two pixels half the image apart lie as far apart on ground as their spacing says.
  const Vector3 a = to_earth_fixed(scene.to_ground({512, 100}));
  const Vector3 b = to_earth_fixed(scene.to_ground({512, 612}));
  EXPECT_NEAR(length(b - a), 512 * scene.sample_spacing_metres, 0.05);
}

TEST(GroundRange, RastersCanBeTurned) {
  Options o;
  o.variant = Variant::mgd;
  const Scene plain = make_scene(o);
  o.start_with = "LATEAZFARRG";
  const Scene turned = make_scene(o);
  const Vector3 a = to_earth_fixed(plain.to_ground({0, 0}));
  const Vector3 b = to_earth_fixed(turned.to_ground({1023, 1023}));
  EXPECT_LT(length(a - b), 1e-3);
}

TEST(Scene, RefusesWhatCannotBe) {
  Options o;
  o.latitude = 89.5;
  EXPECT_THROW(make_scene(o), std::invalid_argument) << "no orbit sees the pole";
  o = Options();
  o.lines = 10;
  EXPECT_THROW(make_scene(o), std::invalid_argument);
  o = Options();
  o.incidence = 80;
  EXPECT_THROW(make_scene(o), std::invalid_argument);
}

}  // namespace
