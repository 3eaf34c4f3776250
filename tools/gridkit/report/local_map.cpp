#include "tools/gridkit/report/local_map.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numbers>

#include "tools/gridkit/report/html.h"
#include "tools/gridkit/report/svg_plot.h"

namespace report {

namespace {

using rmdllib::Ellipsoid;
using rmdllib::Geodetic;

constexpr double degree = std::numbers::pi / 180;
constexpr double metres_per_degree = 111320;
constexpr double inner_width = LocalMap::width - LocalMap::left - LocalMap::right;
constexpr double inner_height = LocalMap::height - LocalMap::top - LocalMap::bottom;

Geodetic at_sea_level(const Geodetic& place) {
  return {place.latitude_degrees, place.longitude_degrees, 0};
}

// The mean direction of all places, so that no date line or pole matters.
Geodetic middle_of(const Ellipsoid& earth, const std::vector<Geodetic>& places) {
  rmdllib::Vector3 sum;
  for (const Geodetic& place : places) sum = sum + earth.to_earth_fixed(at_sea_level(place));
  return at_sea_level(earth.to_geodetic((earth.radius_below(sum) / length(sum)) * sum));
}

std::string degrees_in_words(double value, int decimals, const char* positive,
                             const char* negative) {
  const std::string sign = value > 0 ? positive : value < 0 ? negative : "";
  return fixed(std::abs(value), decimals) + "°" + sign;
}

// The label's place on an edge: where a line crosses it between two places.
std::optional<Place> crossing(const Place& a, const Place& b, bool left_edge) {
  if (left_edge) {
    if ((a.x - LocalMap::left) * (b.x - LocalMap::left) > 0 || a.x == b.x) return std::nullopt;
    const double y = a.y + (b.y - a.y) * (LocalMap::left - a.x) / (b.x - a.x);
    const bool inside = y > LocalMap::top && y < LocalMap::height - LocalMap::bottom;
    return inside ? std::optional(Place{LocalMap::left, y}) : std::nullopt;
  }
  constexpr double edge = LocalMap::height - LocalMap::bottom;
  if ((a.y - edge) * (b.y - edge) > 0 || a.y == b.y) return std::nullopt;
  const double x = a.x + (b.x - a.x) * (edge - a.y) / (b.y - a.y);
  const bool inside = x > LocalMap::left && x < LocalMap::width - LocalMap::right;
  return inside ? std::optional(Place{x, edge}) : std::nullopt;
}

}  // namespace

LocalMap::LocalMap(const std::vector<Geodetic>& places)
    : earth_(Ellipsoid::wgs84()), middle_(middle_of(earth_, places)) {
  double west = 0;
  double east = 0;
  double south = 0;
  double north = 0;
  for (const Geodetic& place : places) {
    const auto [x, y] = metres_of(place);
    west = std::min(west, x);
    east = std::max(east, x);
    south = std::min(south, y);
    north = std::max(north, y);
  }
  shift_east_ = (west + east) / 2;
  shift_north_ = (south + north) / 2;
  constexpr double room = 1.45;
  constexpr double smallest = 1;  // m a unit of the drawing
  metres_per_unit_ = std::max(
      smallest, room * std::max((east - west) / inner_width, (north - south) / inner_height));
}

std::array<double, 2> LocalMap::metres_of(const Geodetic& place) const {
  const auto way = earth_.to_earth_fixed(at_sea_level(place)) - earth_.to_earth_fixed(middle_);
  return {dot(way, Ellipsoid::east(middle_)), dot(way, Ellipsoid::north(middle_))};
}

std::optional<Place> LocalMap::place_of(const Geodetic& place) const {
  if (dot(earth_.to_earth_fixed(at_sea_level(place)), Ellipsoid::up(middle_)) <= 0) {
    return std::nullopt;
  }
  const auto [east, north] = metres_of(place);
  return Place{left + inner_width / 2 + (east - shift_east_) / metres_per_unit_,
               top + inner_height / 2 - (north - shift_north_) / metres_per_unit_};
}

LocalMap::Line LocalMap::line(double value, bool is_parallel, double from, double to) const {
  constexpr int steps = 64;
  Line result;
  std::optional<Place> before;
  for (int i = 0; i <= steps; ++i) {
    const double along = from + (to - from) * i / steps;
    const auto now = place_of(is_parallel ? Geodetic{value, along, 0} : Geodetic{along, value, 0});
    if (now) {
      result.path += (before ? "L" : "M") + fixed(now->x, 1) + ' ' + fixed(now->y, 1);
    }
    if (now && before && !result.label) result.label = crossing(*before, *now, is_parallel);
    before = now;
  }
  return result;
}

LocalMap::Graticule LocalMap::graticule() const {
  constexpr int parallels = 4;
  constexpr int meridians = 3;
  const double degrees_per_unit = metres_per_unit_ / metres_per_degree;
  // How far lines must be drawn to reach the frame's corners.
  const double reach = std::hypot(inner_width, inner_height) / 2 * degrees_per_unit +
                       std::hypot(shift_east_, shift_north_) / metres_per_degree;
  const double south = std::max(-90.0, middle_.latitude_degrees - reach);
  const double north = std::min(90.0, middle_.latitude_degrees + reach);
  const double shortest = std::cos(std::max(std::abs(south), std::abs(north)) * degree);
  const double turn = shortest * 180 <= reach ? 180 : reach / shortest;
  const double west = middle_.longitude_degrees - turn;
  const double east = middle_.longitude_degrees + turn;
  Graticule result;
  const RoundStep up = round_step(inner_height * degrees_per_unit, parallels);
  for (const double latitude : up.multiples(south, north)) {
    const Line drawn = line(latitude, true, west, east);
    result.lines += drawn.path;
    if (!drawn.label) continue;
    result.labels.push_back({{left - 5, drawn.label->y + 3.5},
                             Anchor::end,
                             degrees_in_words(latitude, up.decimals, " N", " S")});
  }
  const double width_in_degrees =
      inner_width * degrees_per_unit / std::max(0.01, std::cos(middle_.latitude_degrees * degree));
  const RoundStep across = round_step(std::min(width_in_degrees, 180.0), meridians);
  for (const double longitude : across.multiples(west, east)) {
    const Line drawn = line(longitude, false, south, north);
    result.lines += drawn.path;
    if (!drawn.label) continue;
    result.labels.push_back(
        {{drawn.label->x, height - bottom + 15},
         Anchor::middle,
         degrees_in_words(std::remainder(longitude, 360), across.decimals, " E", " W")});
  }
  result.lines = "<path class=\"grid\" d=\"" + result.lines + "\"/>";
  return result;
}

LocalMap::ScaleBar LocalMap::scale_bar() const {
  const double longest = inner_width / 3 * metres_per_unit_;
  const double power = std::pow(10, std::floor(std::log10(longest)));
  const double share = longest / power;
  const double bar = power * (share >= 5 ? 5 : share >= 2 ? 2 : 1);
  const double from = left + 10;
  const double to = from + bar / metres_per_unit_;
  const double y = height - bottom - 10;
  constexpr double tick = 4;
  const std::string words = bar >= 1000 ? number(bar / 1000) + " km" : number(bar) + " m";
  return {"<path class=\"scale\" d=\"M" + fixed(from, 1) + ' ' + fixed(y - tick, 1) + "v4H" +
              fixed(to, 1) + "v-4\"/>",
          {from, y - tick, to, y},
          {{(from + to) / 2, y - 8}, Anchor::middle, words}};
}

}  // namespace report
