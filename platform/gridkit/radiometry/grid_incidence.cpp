#include "gridkit/radiometry/grid_incidence.h"

#include <algorithm>
#include <numbers>
#include <span>
#include <utility>

namespace gridkit {

namespace {

std::vector<double> rising(std::span<const double> axis) {
  std::vector<double> knots(axis.begin(), axis.end());
  std::sort(knots.begin(), knots.end());
  return knots;
}

}  // namespace

GridIncidence::GridIncidence(std::shared_ptr<const GeolocationGrid> grid)
    : grid_(std::move(grid)) {}

double GridIncidence::at(double line, double sample) const {
  return grid_->incidence_at(line, sample) * std::numbers::pi / 180;
}

std::vector<double> GridIncidence::line_knots() const {
  return rising(grid_->line_axis());
}

std::vector<double> GridIncidence::sample_knots() const {
  return rising(grid_->sample_axis());
}

std::string GridIncidence::source() const {
  return "geolocation grid of " + std::to_string(grid_->along()) + " x " +
         std::to_string(grid_->across()) + " points, bilinear";
}

}  // namespace gridkit
