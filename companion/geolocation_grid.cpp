#include "companion/geolocation_grid.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <optional>

#include "companion/cosar_file.h"
#include "companion/failure.h"
#include "companion/grid_points.h"
#include "companion/utc_seconds.h"
#include "companion/xml_walk.h"

namespace companion {

namespace {

constexpr std::int64_t most_bytes = std::int64_t{1} << 30;
// What signals and clocks do: 150 m of range, 70 m of flight.
constexpr double largest_delay = 1e-6;  // s
constexpr double largest_shift = 1e-2;  // s
// A sum of polynomials that changes by less over the swath, 3 mm of range, counts as a constant.
constexpr double largest_change = 2e-11;  // s
// Rows and columns are rounded; those of another scene are off by much more than this share.
constexpr double largest_deviation = 0.01;

[[noreturn]] void refuse(const std::string& path, const std::string& fault) {
  Failure failure(gkc_BadDescription, path, fault);
  throw failure;
}

// The value of a sum of polynomials, which must be one all over the grid.
double constant_of(const std::string& path, const char* name,
                   const std::vector<RangePolynomial>& sum, double nearest, double farthest,
                   double largest) {
  const auto at = [&](double range_time) {
    double value = 0;
    for (const RangePolynomial& polynomial : sum) value += polynomial.at(range_time);
    return value;
  };
  const double value = at((nearest + farthest) / 2);
  if (!(std::abs(value) <= largest)) {
    char text[160];
    std::snprintf(text, sizeof text, "its %s add up to %.3g s; no signal has more than %.0e s",
                  name, value, largest);
    refuse(path, text);
  }
  const double change = std::max(std::abs(at(nearest) - value), std::abs(at(farthest) - value));
  if (change <= largest_change) return value;
  char text[160];
  std::snprintf(text, sizeof text,
                "its %s change by %.3g s over the swath; only such that stay the same are applied",
                name, change);
  refuse(path, text);
}

// Least and largest of a number of the points.
struct Extent {
  double least;
  double largest;
};

Extent extent_of(const GeolocationGrid& grid, double gkc_GridPoint::*number) {
  const auto [least, largest] = std::minmax_element(
      grid.points.begin(), grid.points.end(),
      [=](const gkc_GridPoint& a, const gkc_GridPoint& b) { return a.*number < b.*number; });
  return {(*least).*number, (*largest).*number};
}

// The grid must reach over the scene, up to a step that may lack at either end.
void require_cover(const std::string& path, const char* name, Extent grid, std::int32_t points,
                   double first, double last) {
  const double step = (grid.largest - grid.least) / (points - 1);
  if (step > 0 && grid.least <= first + step && grid.largest >= last - step) return;
  char text[240];
  std::snprintf(text, sizeof text,
                "does not belong to this scene: its points have %s from %.9g to %.9g s, the scene "
                "has %.9g to %.9g s",
                name, grid.least, grid.largest, first, last);
  refuse(path, text);
}

// In a raster whose lines, or samples, are even in time each point's number tells its time, counted
// from either end.
void require_even(const std::string& path, const char* name, const GeolocationGrid& grid,
                  double gkc_GridPoint::*time, double gkc_GridPoint::*number, double first,
                  double last, std::int32_t count) {
  const auto largest_miss = [&](bool from_the_end) {
    double largest = 0;
    for (const gkc_GridPoint& point : grid.points) {
      const double place = (point.*time - first) / (last - first) * (count - 1);
      largest =
          std::max(largest, std::abs(point.*number - (from_the_end ? count - 1 - place : place)));
    }
    return largest;
  };
  const double miss = std::min(largest_miss(false), largest_miss(true));
  if (miss <= std::max(2.0, largest_deviation * count)) return;
  char text[200];
  std::snprintf(text, sizeof text,
                "does not belong to this image: the %s of its points are up to %.1f off those that "
                "their times tell",
                name, miss);
  refuse(path, text);
}

void require_fit(const std::string& path, const GeolocationGrid& grid, const ProductFacts& facts) {
  const SceneFacts& scene = facts.scene;
  const double start = seconds_since_midnight(scene.start, scene.start);
  const double stop = seconds_since_midnight(scene.stop, scene.start);
  require_cover(path, "azimuth times", extent_of(grid, &gkc_GridPoint::azimuth_time),
                grid.points_along, start, stop);
  require_cover(path, "range times", extent_of(grid, &gkc_GridPoint::range_time),
                grid.points_across, scene.first_range_time, scene.last_range_time);
  if (facts.is_on_map) return;
  require_even(path, "rows", grid, &gkc_GridPoint::azimuth_time, &gkc_GridPoint::line, start, stop,
               facts.lines);
  if (!facts.is_complex) return;
  require_even(path, "columns", grid, &gkc_GridPoint::range_time, &gkc_GridPoint::sample,
               scene.first_range_time, scene.last_range_time, facts.samples);
}

// The open file and how large it is.
struct OpenFile {
  SharedFile file;
  std::int64_t bytes = 0;
};

OpenFile open_file(const std::string& path) {
  gke_Report* report = nullptr;
  OpenFile opened;
  opened.file.reset(gkf_SharedOpen(path.c_str(), &report));
  if (opened.file != nullptr) opened.bytes = gkf_SharedSize(opened.file.get(), &report);
  if (opened.file == nullptr || opened.bytes < 0) {
    Failure failure(gkc_CannotRead, take_report(report));
    failure.path = path;
    throw failure;
  }
  if (opened.bytes > most_bytes) {
    refuse(path, "is longer than 1 GiB, which no geolocation grid is");
  }
  return opened;
}

}  // namespace

GeolocationGrid read_geolocation_grid(const std::string& path, const ProductFacts& facts) {
  const OpenFile opened = open_file(path);
  XmlWalk walk(*opened.file, path);
  constexpr const char* root = "geoReference";
  walk.enter_root(root);
  std::optional<PropagationEffects> effects;
  std::optional<GeolocationGrid> grid;
  walk.children(root, [&](const std::string& child) {
    if (child == "signalPropagationEffects") {
      if (effects) walk.fail(lmx::error_too_many_occurrences, child);
      effects = read_propagation_effects(walk, child);
    } else if (child == "geolocationGrid") {
      if (grid) walk.fail(lmx::error_too_many_occurrences, child);
      grid = read_points(walk, child, facts.scene.start, opened.bytes);
    } else {
      walk.skip(child);
    }
  });
  if (!effects) walk.fail(lmx::error_required_element_missing, root, "signalPropagationEffects");
  if (!grid) walk.fail(lmx::error_required_element_missing, root, "geolocationGrid");
  require_fit(path, *grid, facts);
  const auto [nearest, farthest] = extent_of(*grid, &gkc_GridPoint::range_time);
  grid->range_delay =
      constant_of(path, "range delays", effects->delays, nearest, farthest, largest_delay);
  grid->azimuth_shift =
      constant_of(path, "azimuth shifts", effects->shifts, nearest, farthest, largest_shift);
  return std::move(*grid);
}

}  // namespace companion
