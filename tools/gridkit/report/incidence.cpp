#include "tools/gridkit/report/incidence.h"

#include <cstdint>
#include <numbers>

#include "gridkit/image_radiometry.h"
#include "tools/gridkit/report/html.h"
#include "tools/gridkit/report/svg_plot.h"

namespace report {

namespace {

constexpr int steps = 100;

Series across(const gridkit::ImageIncidence& incidence, const char* name, std::int64_t line) {
  Series series{name, {}};
  for (int i = 0; i <= steps; ++i) {
    const double sample = static_cast<double>(incidence.samples - 1) * i / steps;
    const double angle = incidence.angles->at(static_cast<double>(line), sample);
    series.points.push_back({sample, angle * 180 / std::numbers::pi});
  }
  return series;
}

}  // namespace

std::string draw_incidence(const gridkit::Product& product) try {
  const gridkit::ImageIncidence incidence = incidence_of(product);
  const std::int64_t last = incidence.lines - 1;
  Plot plot;
  plot.title = "Across the swath";
  plot.x_label = "sample";
  plot.y_label = "angle of incidence, °";
  plot.least_y_range = 0.1;  // degrees; a narrow cut-out has a nearly constant angle
  plot.series = {across(incidence, "first line", 0), across(incidence, "middle line", last / 2),
                 across(incidence, "last line", last)};
  return "<p>From " + number(incidence.near_degrees, 4) + "° in near range to " +
         number(incidence.far_degrees, 4) + "° in far range, by the " +
         escape(incidence.angles->source()) + ".</p>\n<div class=\"plots\">" + draw(plot) +
         "</div>";
} catch (const gridkit::Error& error) {
  return "<p class=\"none\">" + escape(error.sentence()) + "</p>";
}

}  // namespace report
