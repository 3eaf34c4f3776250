#include "rmdllib/ellipsoid.h"

#include <gtest/gtest.h>

#include <limits>

#include "gridkit/error.h"

namespace {

using rmdllib::Ellipsoid;

// 6378137 m by definition, and times 1 - 1 / 298.257223563 towards the pole.
TEST(Ellipsoid, OfTheWorldGeodeticSystemHasItsAxes) {
  const Ellipsoid earth = Ellipsoid::wgs84();
  constexpr double semimajor = 6378137;
  EXPECT_NEAR(semimajor, earth.to_earth_fixed({0, 0, 0}).x, 1e-6);
  EXPECT_NEAR(semimajor * (1 - 1 / 298.257223563), earth.to_earth_fixed({90, 0, 0}).z, 1e-6);
}

TEST(Ellipsoid, OfNoEarthIsRefused) {
  constexpr double none = std::numeric_limits<double>::quiet_NaN();
  struct Axes {
    double semimajor, semiminor;
  };
  for (const auto [a, b] : {Axes{6e6, 7e6}, {6e6, 0}, {6e6, -6e6}, {none, 6e6}, {6e6, none}}) {
    EXPECT_THROW(Ellipsoid(a, b), gridkit::Error) << a << ' ' << b;
  }
  EXPECT_NO_THROW(Ellipsoid(6e6, 6e6)) << "a sphere is one";
}

}  // namespace
