#include "gridkit/radiometry/gain_mesh.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "gridkit/error.h"

namespace gridkit {

namespace {

constexpr std::size_t most_nodes = std::size_t{1} << 20;

// Knots inside the axis between its ends. An axis of one pixel has one node.
std::vector<double> axis_of(std::int64_t count, std::vector<double> knots) {
  const double last = static_cast<double>(count - 1);
  std::erase_if(knots, [&](double knot) { return !(knot > 0 && knot < last); });
  knots.insert(knots.begin(), 0);
  if (last > 0) knots.push_back(last);
  return knots;
}

// With a node halfway between any two.
std::vector<double> halved(const std::vector<double>& nodes) {
  std::vector<double> result;
  for (std::size_t i = 0; i + 1 < nodes.size(); ++i) {
    result.push_back(nodes[i]);
    result.push_back((nodes[i] + nodes[i + 1]) / 2);
  }
  result.push_back(nodes.back());
  return result;
}

// The node that begins the stretch in which a place lies, and how far along it is, from 0 to 1.
std::pair<std::size_t, double> stretch_of(std::span<const double> nodes, double place) {
  if (nodes.size() < 2) return {0, 0};
  const auto after = std::upper_bound(nodes.begin() + 1, nodes.end() - 1, place);
  const auto first = static_cast<std::size_t>(after - nodes.begin()) - 1;
  return {first, (place - nodes[first]) / (nodes[first + 1] - nodes[first])};
}

}  // namespace

GainMesh::GainMesh(std::int64_t lines, std::int64_t samples, const Knots& knots,
                   const Function& exact, double precision)
    : lines_(axis_of(lines, knots.lines)), samples_(axis_of(samples, knots.samples)) {
  fill(exact);
  for (;;) {
    const bool halve_samples = largest_error(exact, false) > precision;
    const bool halve_lines = largest_error(exact, true) > precision;
    if (!halve_samples && !halve_lines) return;
    if (halve_samples) samples_ = halved(samples_);
    if (halve_lines) lines_ = halved(lines_);
    fill(exact);
  }
}

void GainMesh::fill(const Function& exact) {
  if (lines_.size() * samples_.size() > most_nodes) {
    throw Error("the angles of incidence change too abruptly to be interpolated");
  }
  values_.clear();
  for (const double line : lines_) {
    for (const double sample : samples_) {
      const double value = exact(line, sample);
      if (!std::isfinite(value) || !(value > 0)) {
        throw Error("an angle of incidence is not between 0 and 90 degrees");
      }
      values_.push_back(value);
    }
  }
}

double GainMesh::at(double line, double sample) const {
  const auto [l, down] = stretch_of(lines_, line);
  const auto [s, along] = stretch_of(samples_, sample);
  const std::size_t next_line = lines_.size() > 1 ? samples_.size() : 0;
  const std::size_t next_sample = samples_.size() > 1 ? 1 : 0;
  const double* corner = values_.data() + l * samples_.size() + s;
  const double above = corner[0] + along * (corner[next_sample] - corner[0]);
  const double below =
      corner[next_line] + along * (corner[next_line + next_sample] - corner[next_line]);
  return above + down * (below - above);
}

// Halfway between nodes along one axis, on the nodes of the other.
double GainMesh::largest_error(const Function& exact, bool between_lines) const {
  const std::vector<double>& axis = between_lines ? lines_ : samples_;
  const std::vector<double>& other = between_lines ? samples_ : lines_;
  double largest = 0;
  for (std::size_t i = 0; i + 1 < axis.size(); ++i) {
    const double middle = (axis[i] + axis[i + 1]) / 2;
    for (const double across : other) {
      const double line = between_lines ? middle : across;
      const double sample = between_lines ? across : middle;
      const double value = exact(line, sample);
      largest = std::max(largest, std::abs(at(line, sample) / value - 1));
    }
  }
  return largest;
}

void GainMesh::at_line(double line, std::span<double> values) const {
  const auto [l, down] = stretch_of(lines_, line);
  const double* above = values_.data() + l * samples_.size();
  const double* below = lines_.size() > 1 ? above + samples_.size() : above;
  for (std::size_t s = 0; s < samples_.size(); ++s) {
    values[s] = above[s] + down * (below[s] - above[s]);
  }
}

}  // namespace gridkit
