#include "rmdllib/orbit_track.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <utility>

#include "gridkit/error.h"

namespace rmdllib {

namespace {

constexpr std::size_t most_nodes = 4;

bool is_finite(Vector3 v) {
  return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z);
}

}  // namespace

OrbitTrack::OrbitTrack(double first_time, double interval, std::vector<Vector3> positions,
                       std::vector<Vector3> velocities)
    : first_time_(first_time),
      interval_(interval),
      positions_(std::move(positions)),
      velocities_(std::move(velocities)) {
  if (positions_.size() < 2 || positions_.size() != velocities_.size()) {
    throw gridkit::Error("an orbit needs two state vectors or more, each with its velocity");
  }
  if (!std::isfinite(first_time) || !std::isfinite(interval) || !(interval > 0)) {
    throw gridkit::Error("the times of the state vectors are no rising sequence");
  }
  if (!std::all_of(positions_.begin(), positions_.end(), is_finite) ||
      !std::all_of(velocities_.begin(), velocities_.end(), is_finite)) {
    throw gridkit::Error("a state vector holds a number that is not finite");
  }
}

double OrbitTrack::last_time() const {
  return first_time_ + interval_ * static_cast<double>(positions_.size() - 1);
}

// Newton's form over the nodes taken twice each, with derivatives by Horner's scheme. Time runs in
// intervals from the first node of the window.
Motion OrbitTrack::at(double time) const {
  const std::size_t nodes = std::min(positions_.size(), most_nodes);
  const double place = (time - first_time_) / interval_;
  const double last_start = static_cast<double>(positions_.size() - nodes);
  const double start = std::clamp(std::floor(place) - 1, 0.0, last_start);
  const auto first = static_cast<std::size_t>(start);

  std::array<Vector3, 2 * most_nodes> differences;
  for (std::size_t i = 0; i < 2 * nodes; ++i) differences[i] = positions_[first + i / 2];
  for (std::size_t order = 1; order < 2 * nodes; ++order) {
    for (std::size_t i = 2 * nodes - 1; i >= order; --i) {
      const std::size_t apart = i / 2 - (i - order) / 2;
      differences[i] =
          apart == 0 ? interval_ * velocities_[first + i / 2]
                     : (1 / static_cast<double>(apart)) * (differences[i] - differences[i - 1]);
    }
  }
  const double u = place - start;
  Vector3 value = differences[2 * nodes - 1];
  Vector3 slope;
  Vector3 half_curvature;
  for (std::size_t i = 2 * nodes - 1; i-- > 0;) {
    const std::size_t node = i / 2;
    const double distance = u - static_cast<double>(node);
    half_curvature = slope + distance * half_curvature;
    slope = value + distance * slope;
    value = differences[i] + distance * value;
  }
  return {value, (1 / interval_) * slope, (2 / (interval_ * interval_)) * half_curvature};
}

}  // namespace rmdllib
