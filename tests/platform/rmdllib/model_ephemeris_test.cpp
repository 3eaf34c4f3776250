#include "rmdllib/model_ephemeris.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <functional>
#include <iostream>
#include <limits>
#include <string>
#include <vector>

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double nan = std::numeric_limits<double>::quiet_NaN();

struct State {
  std::array<double, 3> position;
  std::array<double, 3> velocity;
};

// The truth: an ellipse about the Earth by Kepler's equation, perigee at time 0 and 40 degrees
// past the node, seen from the turning Earth.
State truth(double time) {
  constexpr double mu = 3.986004418e14;  // m^3/s^2
  constexpr double earth_rate = 7.292115e-5;
  constexpr double a = 6883e3;
  constexpr double e = 0.0013;
  constexpr double inclination = 97.44 * M_PI / 180;
  constexpr double perigee = 40 * M_PI / 180;
  const double motion = std::sqrt(mu / (a * a * a));
  double anomaly = motion * time;
  for (int i = 0; i < 20; ++i) anomaly = motion * time + e * std::sin(anomaly);
  const double rate = motion / (1 - e * std::cos(anomaly));
  const double b = a * std::sqrt(1 - e * e);
  // In the orbit's plane, from perigee; then from the node; then tilted; then turned with the
  // Earth.
  const double px = a * (std::cos(anomaly) - e), py = b * std::sin(anomaly);
  const double qx = -a * std::sin(anomaly) * rate, qy = b * std::cos(anomaly) * rate;
  const auto tilt = [&](double x, double y) {
    const double along = x * std::cos(perigee) - y * std::sin(perigee);
    const double across = x * std::sin(perigee) + y * std::cos(perigee);
    return std::array{along, across * std::cos(inclination), across * std::sin(inclination)};
  };
  const auto turn = [&](const std::array<double, 3>& v) {
    const double angle = 0.7 + earth_rate * time;
    return std::array{v[0] * std::cos(angle) + v[1] * std::sin(angle),
                      v[1] * std::cos(angle) - v[0] * std::sin(angle), v[2]};
  };
  State state{turn(tilt(px, py)), turn(tilt(qx, qy))};
  state.velocity[0] += earth_rate * state.position[1];
  state.velocity[1] -= earth_rate * state.position[0];
  return state;
}

// A record with its arrays; everything that is not asked for is filled with a pattern.
struct Record {
  RadarGenericModel model;
  std::array<std::vector<double>, 6> arrays;

  Record(double first, double interval, int count, double start, double duration,
         const std::function<State(double)>& orbit = truth) {
    std::memset(&model, 0x5A, sizeof model);
    model.first_pt_secs_of_day = first;
    model.time_interval = interval;
    model.num_pos_pts = count;
    model.image_start_time = start;
    model.image_duration = duration;
    for (int i = 0; i < count; ++i) {
      const State state = orbit(first + interval * i);
      for (std::size_t axis = 0; axis < 3; ++axis) {
        arrays[axis].push_back(state.position[axis]);
        arrays[axis + 3].push_back(state.velocity[axis]);
      }
    }
    std::size_t k = 0;
    for (RadarArray* array :
         {&model.rsx, &model.rsy, &model.rsz, &model.vsx, &model.vsy, &model.vsz}) {
      array->count = count;
      array->elements = arrays[k++].data();
    }
  }

  double middle() const { return model.image_start_time + model.image_duration / 2; }

  State modelled(double time) const {
    const double t = time - middle();
    State state{};
    for (std::size_t axis = 0; axis < 3; ++axis) {
      const double* r = model.rs_coeffs + 3 * axis;
      const double* v = model.vs_coeffs + 3 * axis;
      state.position[axis] = r[0] + r[1] * t + r[2] * t * t;
      state.velocity[axis] = v[0] + v[1] * t + v[2] * t * t;
    }
    return state;
  }

  // Models it; the message of the report, if there is one.
  std::string run() {
    gke_Report* report = nullptr;
    rmdl_modelEphemeris(&model, &report);
    const std::string message = report == nullptr ? "" : gke_ReportMessage(report);
    if (report != nullptr) {
      EXPECT_STREQ(gke_ReportWord(report), "rmdl_modelEphemeris");
    }
    gke_DeleteErrorReportEx(&report);
    return message;
  }
};

double distance(const std::array<double, 3>& a, const std::array<double, 3>& b) {
  return std::hypot(a[0] - b[0], a[1] - b[1], a[2] - b[2]);
}

struct Residuals {
  double position = 0;  // m, the largest inside the scene
  double velocity = 0;  // m/s
};

Residuals residuals(const Record& record, const std::function<State(double)>& orbit = truth) {
  Residuals worst;
  for (int k = 0; k <= 1000; ++k) {
    const double time = record.model.image_start_time + record.model.image_duration * k / 1000;
    const State model = record.modelled(time);
    const State real = orbit(time);
    worst.position = std::max(worst.position, distance(model.position, real.position));
    worst.velocity = std::max(worst.velocity, distance(model.velocity, real.velocity));
  }
  return worst;
}

Residuals measured(Record& record, const std::string& what) {
  EXPECT_EQ(record.run(), "");
  const Residuals worst = residuals(record);
  std::cout << what << ": " << worst.position << " m, " << worst.velocity * 1000 << " mm/s\n";
  testing::Test::RecordProperty(what + " [m]", std::to_string(worst.position));
  testing::Test::RecordProperty(what + " [mm/s]", std::to_string(worst.velocity * 1000));
  return worst;
}

TEST(ModelEphemeris, TruthIsAnOrbit) {
  // Velocity is the rate of position.
  const State before = truth(999.99), now = truth(1000), after = truth(1000.01);
  for (std::size_t axis = 0; axis < 3; ++axis) {
    EXPECT_NEAR((after.position[axis] - before.position[axis]) / 0.02, now.velocity[axis], 1e-4);
  }
}

TEST(ModelEphemeris, FitsATenSecondSceneAtAnyPlaceBetweenTheVectors) {
  for (const double start : {1050.0, 1052.5, 1055.0, 1057.3}) {
    Record record(1000, 10, 12, start, 10);
    const Residuals worst = measured(record, "10 s scene at " + std::to_string(start));
    EXPECT_LT(worst.position, 0.5);
    EXPECT_LT(worst.velocity, 0.005);
  }
}

TEST(ModelEphemeris, FitsATenSecondSceneAtAnyPlaceOfTheOrbit) {
  Residuals worst;
  for (double first = 0; first < 5700; first += 50) {
    Record record(first, 10, 12, first + 52.5, 10);
    ASSERT_EQ(record.run(), "");
    const Residuals here = residuals(record);
    worst.position = std::max(worst.position, here.position);
    worst.velocity = std::max(worst.velocity, here.velocity);
  }
  std::cout << "10 s scenes along an orbit: " << worst.position << " m, " << worst.velocity * 1000
            << " mm/s\n";
  EXPECT_LT(worst.position, 0.5);
  EXPECT_LT(worst.velocity, 0.005);
}

TEST(ModelEphemeris, FitsATenSecondSceneAtTheEndsOfTheVectors) {
  Record early(1000, 10, 12, 1000, 10);
  EXPECT_LT(measured(early, "10 s scene at the first vector").position, 0.5);
  Record late(1000, 10, 12, 1100, 10);
  EXPECT_LT(measured(late, "10 s scene at the last vector").position, 0.5);
  Record two(1000, 10, 2, 1000, 10);
  const Residuals worst = measured(two, "10 s scene between two vectors");
  EXPECT_LT(worst.position, 0.5);
  EXPECT_LT(worst.velocity, 0.005);
}

TEST(ModelEphemeris, FitsATenSecondSceneBetweenVectorsAMinuteApart) {
  // What is left is the Hermite polynomial's own error, 60^4 / 384 * 1.0e-5 m/s^4 = 0.35 m, on top.
  Record record(1000, 60, 12, 1290, 10);
  const Residuals worst = measured(record, "10 s scene, vectors 60 s apart");
  EXPECT_LT(worst.position, 0.8);
}

TEST(ModelEphemeris, FitsAShortSceneBetter) {
  Record record(1000, 10, 12, 1052.5, 1);
  const Residuals worst = measured(record, "1 s scene");
  EXPECT_LT(worst.position, 0.002);
  EXPECT_LT(worst.velocity, 0.0002);
}

TEST(ModelEphemeris, IsDefinedForASceneOfOneLine) {
  Record record(1000, 10, 12, 1052.5, 0);
  const Residuals worst = measured(record, "scene of one line");
  EXPECT_LT(worst.position, 0.001);
  EXPECT_LT(worst.velocity, 0.0002);
  // The quadratic term is half the acceleration, here by differences of the true velocity.
  const State before = truth(1052), after = truth(1053);
  for (std::size_t axis = 0; axis < 3; ++axis) {
    EXPECT_NEAR(2 * record.model.rs_coeffs[3 * axis + 2],
                after.velocity[axis] - before.velocity[axis], 1e-3);
  }
}

// A quadratic orbit comes back term by term: x = 7 + 5 t - 3 t^2, and so on, about the middle.
State quadratic(double time) {
  const double t = time - 55;
  return {{7 + 5 * t - 3 * t * t, -2 + 0.5 * t * t, 4 * t}, {5 - 6 * t, t, 4}};
}

TEST(ModelEphemeris, GivesTheTermsAxisByAxisAboutTheMiddleOfTheScene) {
  Record record(10, 10, 10, 50, 10, quadratic);
  ASSERT_EQ(record.run(), "");
  const std::array<double, 9> rs = {7, 5, -3, -2, 0, 0.5, 0, 4, 0};
  const std::array<double, 9> vs = {5, -6, 0, 0, 1, 0, 4, 0, 0};
  for (std::size_t i = 0; i < 9; ++i) {
    EXPECT_NEAR(record.model.rs_coeffs[i], rs[i], 1e-10) << i;
    EXPECT_NEAR(record.model.vs_coeffs[i], vs[i], 1e-10) << i;
  }
}

TEST(ModelEphemeris, GivesTheSameTermsForASceneOutsideOfTheVectors) {
  // Its middle is 1000 s after the first vector's 60 s; the same parabola about that time.
  Record record(60, 10, 10, 1055, 10, quadratic);
  ASSERT_EQ(record.run(), "");
  const State far = quadratic(1060);
  for (std::size_t axis = 0; axis < 3; ++axis) {
    EXPECT_NEAR(record.model.rs_coeffs[3 * axis], far.position[axis], 1e-5);
    EXPECT_NEAR(record.model.rs_coeffs[3 * axis + 1], far.velocity[axis], 1e-8);
    EXPECT_NEAR(record.model.vs_coeffs[3 * axis], far.velocity[axis], 1e-8);
  }
}

TEST(ModelEphemeris, ReadsTheFormOfTheDayBefore) {
  // The vectors begin at -50 s, told as 70; the scene is from 0 to 10 s.
  Record record(-50, 10, 12, 0, 10);
  record.model.first_pt_secs_of_day = 70;
  EXPECT_LT(measured(record, "10 s scene after midnight").position, 0.5);
}

TEST(ModelEphemeris, TakesANegativeDurationBackwards) {
  Record record(1000, 10, 12, 1062.5, -10);
  EXPECT_LT(measured(record, "10 s scene told backwards").position, 0.5);
}

TEST(ModelEphemeris, WritesNothingButTheTerms) {
  Record record(1000, 10, 12, 1052.5, 10);
  RadarGenericModel expected = record.model;
  const auto arrays = record.arrays;
  ASSERT_EQ(record.run(), "");
  EXPECT_NE(std::memcmp(&record.model, &expected, sizeof expected), 0);
  std::copy_n(record.model.rs_coeffs, 9, expected.rs_coeffs);
  std::copy_n(record.model.vs_coeffs, 9, expected.vs_coeffs);
  EXPECT_EQ(std::memcmp(&record.model, &expected, sizeof expected), 0);
  EXPECT_EQ(record.arrays, arrays);
}

TEST(ModelEphemeris, LooksOnlyNearTheSceneAmongMillionsOfVectors) {
  // 2,000,000 vectors, of which all but those around the scene are at rest in the Earth's centre.
  Record record(1000, 10, 12, 1052.5, 10);
  for (auto& array : record.arrays) array.resize(2'000'000);
  std::size_t k = 0;
  for (RadarArray* array : {&record.model.rsx, &record.model.rsy, &record.model.rsz,
                            &record.model.vsx, &record.model.vsy, &record.model.vsz}) {
    array->elements = record.arrays[k++].data();
    array->count = 2'000'000;
  }
  record.model.num_pos_pts = 2'000'000;
  EXPECT_LT(measured(record, "10 s scene among 2,000,000 vectors").position, 0.5);
}

struct Damage {
  const char* message;
  std::function<void(RadarGenericModel&)> make;
};

class UnusableRecord : public testing::TestWithParam<Damage> {};

TEST_P(UnusableRecord, IsRefusedAndStaysAsItWas) {
  Record record(1000, 10, 12, 1052.5, 10);
  GetParam().make(record.model);
  const RadarGenericModel before = record.model;
  const auto arrays = record.arrays;
  EXPECT_EQ(record.run(), GetParam().message);
  EXPECT_EQ(std::memcmp(&record.model, &before, sizeof before), 0);
  rmdl_modelEphemeris(&record.model, nullptr);
  EXPECT_EQ(std::memcmp(&record.model, &before, sizeof before), 0);
}

const Damage damages[] = {
    {"an orbit needs two state vectors, this one has 1",
     [](RadarGenericModel& m) { m.num_pos_pts = 1; }},
    {"an orbit needs two state vectors, this one has 0",
     [](RadarGenericModel& m) { m.num_pos_pts = 0; }},
    {"an orbit needs two state vectors, this one has -2147483648",
     [](RadarGenericModel& m) { m.num_pos_pts = INT32_MIN; }},
    {"rsx has 12 elements for 2147483647 state vectors",
     [](RadarGenericModel& m) { m.num_pos_pts = INT32_MAX; }},
    {"vsz has -1 elements for 12 state vectors", [](RadarGenericModel& m) { m.vsz.count = -1; }},
    {"rsy is missing", [](RadarGenericModel& m) { m.rsy.elements = nullptr; }},
    {"first_pt_secs_of_day is not finite",
     [](RadarGenericModel& m) { m.first_pt_secs_of_day = nan; }},
    {"time_interval is not finite", [](RadarGenericModel& m) { m.time_interval = infinity; }},
    {"image_start_time is not finite",
     [](RadarGenericModel& m) { m.image_start_time = -infinity; }},
    {"image_duration is not finite", [](RadarGenericModel& m) { m.image_duration = nan; }},
    {"time_interval is not positive", [](RadarGenericModel& m) { m.time_interval = 0; }},
    {"time_interval is not positive", [](RadarGenericModel& m) { m.time_interval = -10; }},
    {"the orbit's terms are beyond the range of a double",
     [](RadarGenericModel& m) { m.time_interval = 1e308; }},
    {"the orbit's terms are beyond the range of a double",
     [](RadarGenericModel& m) { m.time_interval = 5e-324; }},
    {"the orbit's terms are beyond the range of a double",
     [](RadarGenericModel& m) { m.image_start_time = 1e300; }},
};

INSTANTIATE_TEST_SUITE_P(ModelEphemeris, UnusableRecord, testing::ValuesIn(damages));

TEST(ModelEphemeris, NamesTheElementThatIsNotFinite) {
  Record record(1000, 10, 12, 1052.5, 10);
  record.arrays[3][11] = -infinity;
  EXPECT_EQ(record.run(), "vsx[11] is not finite");
  record.arrays[2][0] = nan;
  EXPECT_EQ(record.run(), "rsz[0] is not finite");
}

TEST(ModelEphemeris, RefusesPositionsThatOverflow) {
  Record record(1000, 10, 12, 1052.5, 10);
  for (double& x : record.arrays[0]) x = 1.7e308;
  EXPECT_EQ(record.run(), "the orbit's terms are beyond the range of a double");
}

TEST(ModelEphemeris, RefusesNoModel) {
  gke_Report* report = nullptr;
  rmdl_modelEphemeris(nullptr, &report);
  ASSERT_NE(report, nullptr);
  EXPECT_STREQ(gke_ReportMessage(report), "no model was given");
  gke_DeleteErrorReportEx(&report);
  rmdl_modelEphemeris(nullptr, nullptr);
}

}  // namespace
