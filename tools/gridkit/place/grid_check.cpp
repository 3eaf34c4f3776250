#include "tools/gridkit/place/grid_check.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string>
#include <utility>
#include <vector>

namespace {

using json = nlohmann::ordered_json;
using rmdllib::Vector3;

constexpr double speed_of_light = 299792458;  // m/s, by definition of the metre

struct Residual {
  double along;
  double across;
  double height;
};

Residual residual_of(const rmdllib::RadarGeometry& geometry, const gkc_GridPoint& point) {
  const rmdllib::Geodetic place = {point.latitude, point.longitude, point.height};
  const rmdllib::RadarPoint stated =
      geometry.corrected({point.azimuth_time, point.range_time / 2 * speed_of_light});
  const rmdllib::RadarPoint seen =
      rmdllib::to_radar(geometry.orbit(), geometry.earth(), place, stated.time);
  const rmdllib::Motion satellite = geometry.orbit().at(seen.time);
  const Vector3 target = geometry.earth().to_earth_fixed(place);
  // What is seen abeam moves over the ground as fast as the satellite, less by how much nearer it
  // is to the Earth's centre.
  const double speed = length(satellite.velocity) * length(target) / length(satellite.position);
  const double steepness = -dot(rmdllib::Ellipsoid::up(place), unit(target - satellite.position));
  const double across = seen.range - stated.range;
  return {(seen.time - stated.time) * speed, across, across / steepness};
}

// Two passes, so that small scatters about a large mean come out right.
Residuals summed_up(const std::vector<Residual>& all, double Residual::*quantity) {
  const auto count = static_cast<double>(all.size());
  Residuals sum;
  for (const Residual& one : all) {
    sum.mean += one.*quantity / count;
    sum.worst = std::max(sum.worst, std::abs(one.*quantity));
  }
  double squares = 0;
  for (const Residual& one : all) squares += std::pow(one.*quantity - sum.mean, 2);
  sum.scatter = std::sqrt(squares / count);
  return sum;
}

json as_json(const Residuals& residuals) {
  return {{"mean", residuals.mean}, {"std", residuals.scatter}, {"worst", residuals.worst}};
}

}  // namespace

GridCheck check_grid(const rmdllib::RadarGeometry& geometry, const gridkit::GeolocationGrid& grid) {
  std::vector<Residual> all;
  all.reserve(grid.points().size());
  for (const gkc_GridPoint& point : grid.points()) all.push_back(residual_of(geometry, point));
  return {all.size(), summed_up(all, &Residual::along), summed_up(all, &Residual::across),
          summed_up(all, &Residual::height)};
}

std::string fault_of(const GridCheck& check) {
  constexpr double largest = 10;  // m, as of the scene's corners
  if (check.along.worst <= largest && check.across.worst <= largest) return {};
  char text[160];
  std::snprintf(text, sizeof text,
                "points of the geolocation grid lie up to %.1f m along and %.1f m across the line "
                "of sight from where the model has them",
                check.along.worst, check.across.worst);
  return text;
}

json grid_as_json(const GridCheck& check) {
  return {{"points", check.points},
          {"along", as_json(check.along)},
          {"across", as_json(check.across)},
          {"height", as_json(check.height)}};
}

void print_grid(const GridCheck& check) {
  std::printf("%-28s %9s %11s %9s\n",
              ("geolocation grid, " + std::to_string(check.points) + " points").c_str(), "mean, m",
              "scatter, m", "worst, m");
  for (const auto& [name, residuals] : {std::pair{"along the track", check.along},
                                        {"across, line of sight", check.across},
                                        {"height", check.height}}) {
    std::printf("  %-26s %9.4f %11.4f %9.4f\n", name, residuals.mean, residuals.scatter,
                residuals.worst);
  }
}
