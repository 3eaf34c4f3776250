#include "picture/stretch.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>
#include <vector>

#include "tools/gridkit/picture/colour_map.h"

namespace {

constexpr float none = std::numeric_limits<float>::quiet_NaN();

TEST(PercentileStretch, FindsThePercentilesToATenthOfAPercent) {
  std::vector<float> values;
  for (int i = 1; i <= 10000; ++i) values.push_back(static_cast<float>(i));
  const Stretch stretch = percentile_stretch(values, {2, 98});
  EXPECT_NEAR(200, stretch.low, 0.2);
  EXPECT_NEAR(9800, stretch.high, 9.8);
}

TEST(PercentileStretch, OutliersCostNoResolution) {
  std::vector<float> values(1000, 0.01F);
  values.resize(2000, 0.02F);
  values.push_back(65535);
  const Stretch stretch = percentile_stretch(values, {});
  EXPECT_NEAR(0.01, stretch.low, 1e-5);
  EXPECT_NEAR(0.02, stretch.high, 2e-5);
}

TEST(PercentileStretch, LeavesOutWhatIsNoNumber) {
  const Stretch stretch = percentile_stretch(std::vector<float>{none, 5, none}, {});
  EXPECT_NEAR(5, stretch.low, 0.005);
  EXPECT_EQ(stretch.low, stretch.high);
  const Stretch empty = percentile_stretch(std::vector<float>{none, none}, {});
  EXPECT_EQ(0, empty.low);
  EXPECT_EQ(0, empty.high);
}

TEST(StretchValues, GivesEverySideOfTheRange) {
  const std::vector<float> values = {none, 0, 10, 15, 20, 60000};
  EXPECT_EQ((std::vector<std::uint8_t>{0, 1, 1, 128, 255, 255}), stretch_values(values, {10, 20}));
}

TEST(StretchValues, ConstantValuesAreInTheMiddle) {
  EXPECT_EQ((std::vector<std::uint8_t>{128, 0}),
            stretch_values(std::vector<float>{5, none}, {5, 5}));
}

TEST(StretchPhases, GoesOnceAround) {
  constexpr auto pi = static_cast<float>(std::numbers::pi);
  EXPECT_EQ((std::vector<std::uint8_t>{1, 128, 255, 0}),
            stretch_phases(std::vector<float>{-pi, 0, pi, none}));
}

TEST(CyclicColour, WholeTurnsChangeNothing) {
  for (int i = 0; i < 100; ++i) {
    EXPECT_EQ(cyclic_colour(i / 100.0), cyclic_colour(i / 100.0 + 3)) << i;
  }
}

TEST(CyclicColour, StaysWithinWhatAScreenShows) {
  // A colour beyond it would have been cut at 0 or 255 over a stretch of the circle.
  int extreme = 0;
  for (int i = 0; i < 1000; ++i) {
    const gridkit::Colour colour = cyclic_colour(i / 1000.0);
    for (const int part : {colour.red, colour.green, colour.blue}) {
      extreme += part == 0 || part == 255 ? 1 : 0;
    }
  }
  EXPECT_EQ(0, extreme);
}

}  // namespace
