#pragma once

#include <string>
#include <vector>

namespace report {

struct PlotPoint {
  double x = 0;
  double y = 0;
};

// A curve. Points that are not finite break it.
struct Series {
  std::string name;
  std::vector<PlotPoint> points;
};

// A plot of curves over a common pair of axes.
struct Plot {
  std::string title;
  std::string x_label;  // with its unit
  std::string y_label;
  std::vector<Series> series;
  bool filled = false;       // the area below the curves, and the y axis from 0
  double least_y_range = 0;  // so that noise in constant values is not blown up
};

// The plot as a <figure> with an SVG drawing and a legend below, where there is more than one
// curve. All texts are escaped. Without a finite point it says so in words.
std::string draw(const Plot& plot);

// A round distance: 1, 2 or 5 times a power of ten.
struct RoundStep {
  double size = 1;
  int decimals = 0;  // that texts of its multiples need behind the point

  // Its multiples from `low` to `high`, at most some hundreds.
  std::vector<double> multiples(double low, double high) const;
};

// The round distance that divides a length into about so many parts.
RoundStep round_step(double length, int parts);

}  // namespace report
