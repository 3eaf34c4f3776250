#include "rmdllib/orbit_track.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

#include "gridkit/error.h"

namespace {

using rmdllib::OrbitTrack;
using rmdllib::Vector3;

using Vectors = std::vector<Vector3>;

std::string refusal(double first, double interval, const Vectors& positions,
                    const Vectors& velocities) {
  try {
    const OrbitTrack track(first, interval, positions, velocities);
  } catch (const gridkit::Error& error) {
    return error.what();
  }
  return "";
}

// x = 7 + 3 t + t^3, so its velocity is 3 + 3 t^2 and its acceleration 6 t: a polynomial that two
// vectors decide.
TEST(OrbitTrack, FollowsACubicBetweenAndBeyondTwoVectors) {
  const OrbitTrack track(10, 2, {{7, 0, 0}, {21, 0, 0}}, {{3, 0, 0}, {15, 0, 0}});
  EXPECT_EQ(track.last_time(), 12);
  for (const double t : {0.0, 0.5, 1.7, 2.0, 3.0}) {
    const rmdllib::Motion motion = track.at(10 + t);
    EXPECT_NEAR(motion.position.x, 7 + 3 * t + t * t * t, 1e-9) << t;
    EXPECT_NEAR(motion.velocity.x, 3 + 3 * t * t, 1e-9) << t;
    EXPECT_NEAR(motion.acceleration.x, 6 * t, 1e-9) << t;
    EXPECT_EQ(motion.position.y, 0) << t;
  }
}

TEST(OrbitTrack, RefusesVectorsThatAreNoOrbit) {
  const Vectors two = {{7e6, 0, 0}, {7e6, 1, 0}};
  const Vectors one = {{7e6, 0, 0}};
  const char* too_few = "an orbit needs two state vectors or more, each with its velocity";
  EXPECT_EQ(refusal(0, 10, one, one), too_few);
  EXPECT_EQ(refusal(0, 10, two, one), too_few);

  constexpr double infinity = std::numeric_limits<double>::infinity();
  constexpr double none = std::numeric_limits<double>::quiet_NaN();
  const char* no_times = "the times of the state vectors are no rising sequence";
  for (const double interval : {0.0, -10.0, infinity, none}) {
    EXPECT_EQ(refusal(0, interval, two, two), no_times) << interval;
  }
  EXPECT_EQ(refusal(none, 10, two, two), no_times);

  const char* not_finite = "a state vector holds a number that is not finite";
  EXPECT_EQ(refusal(0, 10, {{7e6, 0, 0}, {7e6, none, 0}}, two), not_finite);
  EXPECT_EQ(refusal(0, 10, two, {{0, 0, infinity}, {0, 0, 0}}), not_finite);
  EXPECT_EQ(refusal(0, 10, two, two), "");
}

}  // namespace
