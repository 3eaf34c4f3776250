#include "tools/gridkit/report/svg_plot.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

namespace {

using report::Plot;

std::size_t count(const std::string& text, const std::string& part) {
  std::size_t found = 0;
  for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
    ++found;
  }
  return found;
}

Plot plot(std::vector<report::PlotPoint> points) {
  Plot result;
  result.series = {{"a", std::move(points)}};
  return result;
}

TEST(RoundStep, IsOneTwoOrFiveTimesAPowerOfTen) {
  for (const auto& [length, parts, size, decimals] :
       {std::tuple{10.0, 5, 2.0, 0}, std::tuple{1.0, 5, 0.2, 1}, std::tuple{0.006, 6, 0.001, 3},
        std::tuple{700.0, 6, 100.0, 0}, std::tuple{0.12, 3, 0.05, 2}}) {
    const report::RoundStep step = report::round_step(length, parts);
    EXPECT_NEAR(size, step.size, size * 1e-12) << length;
    EXPECT_EQ(decimals, step.decimals) << length;
  }
}

TEST(RoundStep, MultiplesStayInsideAndAreBounded) {
  const report::RoundStep step = report::round_step(1, 5);
  const auto values = step.multiples(-0.2, 0.41);
  ASSERT_EQ(4U, values.size());
  EXPECT_NEAR(-0.2, values.front(), 1e-12);
  EXPECT_NEAR(0.4, values.back(), 1e-12);
  EXPECT_LE(step.multiples(-1e9, 1e9).size(), 400U);
}

TEST(Draw, EscapesItsTexts) {
  Plot hostile = plot({{0, 0}, {1, 1}});
  hostile.title = hostile.x_label = hostile.y_label = "<script>\"";
  hostile.series.push_back({"<script>", {{0, 1}}});
  const std::string drawn = report::draw(hostile);
  EXPECT_EQ(0U, count(drawn, "<script"));
  EXPECT_EQ(5U, count(drawn, "&lt;script&gt;"));
}

TEST(Draw, SaysWhenThereIsNothing) {
  const double none = std::nan("");
  for (const Plot& empty : {Plot{}, plot({}), plot({{none, 1}, {1, none}})}) {
    EXPECT_EQ(1U, count(report::draw(empty), "Nothing to draw."));
  }
}

TEST(Draw, BreaksCurvesAtWhatIsNotFinite) {
  const double infinite = std::numeric_limits<double>::infinity();
  const std::string drawn = report::draw(plot({{0, 1}, {1, 2}, {2, infinite}, {3, 1}, {4, 2}}));
  const std::size_t curve = drawn.find("class=\"curve");
  EXPECT_EQ(2U, count(drawn.substr(curve, drawn.find("/>", curve) - curve), "M"));
  EXPECT_EQ(0U, count(drawn, "inf") + count(drawn, "nan"));
}

TEST(Draw, StandsTheLargestAndTheEqual) {
  const double largest = std::numeric_limits<double>::max();
  for (const Plot& odd :
       {plot({{0, -largest}, {1, largest}}), plot({{5, 5}}), plot({{1e300, 1e300}, {2e300, 1e300}}),
        plot({{-1e-320, 0}, {1e-320, 0}}), plot({{0, 5e-324}, {5e-324, 0}}),
        plot({{0, largest}, {1, largest}, {2, 1}, {3, 2}})}) {
    const std::string drawn = report::draw(odd);
    EXPECT_EQ(0U, count(drawn, "inf") + count(drawn, "nan"));
    EXPECT_LT(drawn.size(), 200'000U);
  }
}

}  // namespace
