#include "gridkit/geolocation_grid.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <utility>

#include "gridkit/error.h"

namespace gridkit {

namespace {

constexpr double not_a_number = std::numeric_limits<double>::quiet_NaN();

// Rows and columns are whole numbers, rounded point by point.
constexpr double largest_rounding = 1;  // pixel

bool rises_or_falls(const std::vector<double>& axis) {
  return std::adjacent_find(axis.begin(), axis.end(), std::greater_equal<>()) == axis.end() ||
         std::adjacent_find(axis.begin(), axis.end(), std::less_equal<>()) == axis.end();
}

}  // namespace

GeolocationGrid::GeolocationGrid(std::size_t along, std::size_t across,
                                 std::vector<gkc_GridPoint> points, double range_delay,
                                 double azimuth_shift)
    : along_(along),
      across_(across),
      points_(std::move(points)),
      range_delay_(range_delay),
      azimuth_shift_(azimuth_shift) {
  if (along_ < 2 || across_ < 2 || points_.size() / along_ != across_ ||
      points_.size() % along_ != 0) {
    throw Error("a geolocation grid has at least 2 x 2 points");
  }
  std::vector<double> lines(along_);
  std::vector<double> samples(across_);
  for (std::size_t i = 0; i < points_.size(); ++i) {
    lines[i / across_] += points_[i].line / static_cast<double>(across_);
    samples[i % across_] += points_[i].sample / static_cast<double>(along_);
  }
  for (std::size_t i = 0; i < points_.size(); ++i) {
    if (!(std::abs(points_[i].line - lines[i / across_]) <= largest_rounding) ||
        !(std::abs(points_[i].sample - samples[i % across_]) <= largest_rounding)) {
      return;
    }
  }
  if (!rises_or_falls(lines) || !rises_or_falls(samples)) return;
  lines_ = std::move(lines);
  samples_ = std::move(samples);
}

// The last point that is not past the place, sought from about where even points would have it.
// Beyond the axis it is the outermost pair that runs on.
GeolocationGrid::Between GeolocationGrid::find(const std::vector<double>& axis, double at) {
  const double direction = axis.back() > axis.front() ? 1 : -1;
  const std::size_t last = axis.size() - 2;
  const double share = (at - axis.front()) / (axis.back() - axis.front());
  auto point = static_cast<std::size_t>(std::clamp(share, 0.0, 1.0) * static_cast<double>(last));
  while (point < last && (at - axis[point + 1]) * direction >= 0) ++point;
  while (point > 0 && (at - axis[point]) * direction < 0) --point;
  const double fraction = (at - axis[point]) / (axis[point + 1] - axis[point]);
  return {point, std::clamp(fraction, -1.0, 2.0)};
}

double GeolocationGrid::at(double gkc_GridPoint::*number, double line, double sample) const {
  if (!has_image_axes() || std::isnan(line) || std::isnan(sample)) return not_a_number;
  const Between l = find(lines_, line);
  const Between s = find(samples_, sample);
  const gkc_GridPoint* upper = &points_[l.point * across_ + s.point];
  const gkc_GridPoint* lower = upper + across_;
  return std::lerp(std::lerp(upper[0].*number, upper[1].*number, s.fraction),
                   std::lerp(lower[0].*number, lower[1].*number, s.fraction), l.fraction);
}

double GeolocationGrid::incidence_at(double line, double sample) const {
  return at(&gkc_GridPoint::incidence, line, sample);
}

double GeolocationGrid::height_at(double line, double sample) const {
  return at(&gkc_GridPoint::height, line, sample);
}

void GeolocationGrid::incidence_of_line(double line, double first_sample, double sample_step,
                                        std::span<double> angles) const {
  const bool is_known = has_image_axes() && std::isfinite(line) && std::isfinite(first_sample) &&
                        std::isfinite(sample_step);
  if (!is_known) {
    std::fill(angles.begin(), angles.end(), not_a_number);
    return;
  }
  const Between l = find(lines_, line);
  // The angle at each point across, on this line.
  std::vector<double> across(across_);
  for (std::size_t i = 0; i < across_; ++i) {
    const gkc_GridPoint& upper = points_[l.point * across_ + i];
    across[i] = std::lerp(upper.incidence, (&upper)[across_].incidence, l.fraction);
  }
  for (std::size_t k = 0; k < angles.size(); ++k) {
    const Between s = find(samples_, first_sample + static_cast<double>(k) * sample_step);
    angles[k] = std::lerp(across[s.point], across[s.point + 1], s.fraction);
  }
}

}  // namespace gridkit
