#include "tools/gridkit/report/footprint.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <optional>

#include "tools/gridkit/report/html.h"
#include "tools/gridkit/report/local_map.h"

namespace report {

namespace {

using rmdllib::Ellipsoid;
using rmdllib::Geodetic;
using rmdllib::Vector3;

std::string at(const Place& place) {
  return fixed(place.x, 1) + ' ' + fixed(place.y, 1);
}

std::string words_at(const Place& place, const char* anchor, const std::string& words) {
  return "<text class=\"halo\" x=\"" + fixed(place.x, 1) + "\" y=\"" + fixed(place.y, 1) +
         "\" text-anchor=\"" + anchor + "\">" + escape(words) + "</text>";
}

std::string polygon(const LocalMap& map, const std::vector<Geodetic>& corners) {
  std::string path;
  for (const Geodetic& corner : corners) {
    const auto place = map.place_of(corner);
    if (!place) return {};
    path += (path.empty() ? "M" : "L") + at(*place);
  }
  return path + "Z";
}

// A line that ends in an arrow's head.
std::string arrow(const Place& from, const Place& to, const char* style) {
  const double length = std::hypot(to.x - from.x, to.y - from.y);
  if (!(length > 0)) return {};
  constexpr double head = 7;
  const double x = (to.x - from.x) / length * head;
  const double y = (to.y - from.y) / length * head;
  const Place one = {to.x - x + y * 0.5, to.y - y - x * 0.5};
  const Place other = {to.x - x - y * 0.5, to.y - y + x * 0.5};
  return std::string("<path class=\"") + style + "\" d=\"M" + at(from) + "L" + at(to) + "M" +
         at(one) + "L" + at(to) + "L" + at(other) + "\"/>";
}

Vector3 middle_of(const std::vector<Geodetic>& corners) {
  Vector3 sum;
  for (const Geodetic& corner : corners) sum = sum + Ellipsoid::wgs84().to_earth_fixed(corner);
  return (1.0 / static_cast<double>(corners.size())) * sum;
}

bool is_usable(const OrbitState& state) {
  const double distance = length(state.position);
  const double speed = length(state.velocity);
  return std::isfinite(distance) && distance > 1e6 && distance < 1e9 && std::isfinite(speed) &&
         std::isfinite(state.time);
}

// The satellite at a time, straight on from the nearest vector: for a drawing that is enough.
std::optional<OrbitState> state_at(const std::vector<OrbitState>& orbit, double time) {
  const OrbitState* nearest = nullptr;
  for (const OrbitState& state : orbit) {
    if (!is_usable(state)) continue;
    if (nearest == nullptr || std::abs(state.time - time) < std::abs(nearest->time - time)) {
      nearest = &state;
    }
  }
  if (nearest == nullptr) return std::nullopt;
  const double later = std::clamp(time - nearest->time, -60.0, 60.0);
  return OrbitState{time, nearest->position + later * nearest->velocity, nearest->velocity};
}

Geodetic below(const OrbitState& state) {
  Geodetic place = Ellipsoid::wgs84().to_geodetic(state.position);
  place.height = 0;
  return place;
}

std::string svg(const char* label, const std::string& content, int number) {
  const std::string clip = "frame" + std::to_string(number);
  const std::string frame =
      "<rect x=\"" + fixed(LocalMap::left, 0) + "\" y=\"" + fixed(LocalMap::top, 0) +
      "\" width=\"" + fixed(LocalMap::width - LocalMap::left - LocalMap::right, 0) +
      "\" height=\"" + fixed(LocalMap::height - LocalMap::top - LocalMap::bottom, 0) + "\"";
  return "<figure class=\"map\"><figcaption>" + std::string(label) +
         "</figcaption><svg viewBox=\"0 0 " + fixed(LocalMap::width, 0) + ' ' +
         fixed(LocalMap::height, 0) + "\" role=\"img\" aria-label=\"" + label +
         "\"><clipPath id=\"" + clip + "\">" + frame + "/></clipPath>" + frame +
         " class=\"sea\"/>" + content + frame + " class=\"frame\"/></svg></figure>";
}

// Lines are clipped to the frame; the graticule's labels stand outside it.
std::string clipped(const std::string& content, int number) {
  return "<g clip-path=\"url(#frame" + std::to_string(number) + ")\">" + content + "</g>";
}

// The affine placement of a unit picture by the footprint's first three corners.
std::string draped(const LocalMap& map, const std::vector<Geodetic>& corners) {
  const auto origin = map.place_of(corners[0]);
  const auto along = map.place_of(corners[1]);
  const auto down = map.place_of(corners[3]);
  if (!origin || !along || !down) return {};
  return "<image class=\"draped\" width=\"1\" height=\"1\" preserveAspectRatio=\"none\" "
         "transform=\"matrix(" +
         fixed(along->x - origin->x, 3) + ' ' + fixed(along->y - origin->y, 3) + ' ' +
         fixed(down->x - origin->x, 3) + ' ' + fixed(down->y - origin->y, 3) + ' ' +
         fixed(origin->x, 3) + ' ' + fixed(origin->y, 3) + ")\"/>";
}

// Of the drawing's two upper corners and its lower right one, that which is farthest from the
// footprint's; the scale stands in the fourth.
Place emptiest_corner(const LocalMap& map, const std::vector<Geodetic>& corners) {
  constexpr double inset = 46;
  constexpr double west = LocalMap::left + inset;
  constexpr double east = LocalMap::width - LocalMap::right - inset;
  constexpr double north = LocalMap::top + inset;
  constexpr double south = LocalMap::height - LocalMap::bottom - inset;
  Place best;
  double farthest = -1;
  for (const Place candidate : {Place{east, north}, Place{west, north}, Place{east, south}}) {
    double nearest = LocalMap::width;
    for (const Geodetic& corner : corners) {
      const auto place = map.place_of(corner);
      if (!place) continue;
      nearest = std::min(nearest, std::hypot(place->x - candidate.x, place->y - candidate.y));
    }
    if (nearest <= farthest) continue;
    farthest = nearest;
    best = candidate;
  }
  return best;
}

// Two arrows in a corner of the map, of the directions in which the satellite flew and looked.
std::string directions(const LocalMap& map, const Footprint& footprint) {
  const auto state = state_at(footprint.orbit, footprint.duration / 2);
  if (!state) return {};
  const Vector3 centre = middle_of(footprint.corners);
  const Geodetic scene = Ellipsoid::wgs84().to_geodetic(centre);
  const Place from = emptiest_corner(map, footprint.corners);
  const auto arrow_along = [&](const Vector3& way, const char* name) -> std::string {
    const double east = dot(way, Ellipsoid::east(scene));
    const double north = dot(way, Ellipsoid::north(scene));
    const double size = std::hypot(east, north);
    if (!(size > 0)) return {};
    constexpr double reach = 26;
    const Place to = {from.x + east / size * reach, from.y - north / size * reach};
    // A word is wider than high.
    const double off = reach + 9 + 9 * std::abs(east) / size;
    const Place text = {from.x + east / size * off, from.y - north / size * off + 4};
    return arrow(from, to, "direction") + words_at(text, "middle", name);
  };
  return arrow_along(state->velocity, "flight") + arrow_along(centre - state->position, "look");
}

}  // namespace

std::string draw_scene_map(const Footprint& footprint) {
  constexpr int number = 1;
  if (footprint.corners.size() < 4) return {};
  std::vector<Geodetic> shown = footprint.corners;
  shown.insert(shown.end(), footprint.stated.begin(), footprint.stated.end());
  const LocalMap map(shown);
  std::string dots;
  for (const Geodetic& corner : footprint.stated) {
    if (const auto place = map.place_of(corner)) {
      dots += "<circle class=\"stated\" cx=\"" + fixed(place->x, 1) + "\" cy=\"" +
              fixed(place->y, 1) + "\" r=\"3\"/>";
    }
  }
  std::string first;
  if (const auto origin = map.place_of(footprint.corners[0])) {
    const auto opposite = map.place_of(footprint.corners[2]);
    const bool to_left = opposite && opposite->x > origin->x;
    first = words_at({origin->x + (to_left ? -5 : 5), origin->y - 5}, to_left ? "end" : "start",
                     "first pixel");
  }
  const std::string outline =
      "<path class=\"footprint\" d=\"" + polygon(map, footprint.corners) + "\"/>";
  const LocalMap::Graticule graticule = map.graticule();
  return svg("The scene, north up. Dots: corners that the annotation states",
             clipped(draped(map, footprint.corners) + graticule.lines + outline + dots, number) +
                 graticule.labels + first + directions(map, footprint) + map.scale_bar(),
             number);
}

std::string draw_overview(const Footprint& footprint) {
  constexpr int number = 2;
  constexpr double around = 30;  // s of the track before and after the scene
  const double middle_time = footprint.duration / 2;
  const auto middle = state_at(footprint.orbit, middle_time);
  if (footprint.corners.size() < 4 || footprint.orbit.size() < 2 || !middle) return {};
  std::vector<Geodetic> track;
  constexpr int steps = 24;
  for (int i = 0; i <= steps; ++i) {
    const double time = -around + (footprint.duration + 2 * around) * i / steps;
    if (const auto state = state_at(footprint.orbit, time)) track.push_back(below(*state));
  }
  const Geodetic scene = Ellipsoid::wgs84().to_geodetic(middle_of(footprint.corners));
  const Geodetic nadir = below(*middle);
  std::vector<Geodetic> shown = footprint.corners;
  shown.insert(shown.end(), track.begin(), track.end());
  const LocalMap map(shown);
  std::string path;
  for (const Geodetic& place : track) {
    if (const auto drawn = map.place_of(place)) path += (path.empty() ? "M" : "L") + at(*drawn);
  }
  std::string content = "<path class=\"track\" d=\"" + path + "\"/>";
  std::string labels;
  const auto from = map.place_of(nadir);
  const auto to = map.place_of(scene);
  const auto last = map.place_of(track.back());
  const auto before = map.place_of(track[track.size() - 2]);
  if (last && before) content += arrow(*before, *last, "track");
  if (from && to) {
    content += arrow(*from, *to, "sight") + "<circle class=\"nadir\" cx=\"" + fixed(from->x, 1) +
               "\" cy=\"" + fixed(from->y, 1) + "\" r=\"3.5\"/>";
    const bool scene_is_east = to->x >= from->x;
    labels += words_at({from->x + (scene_is_east ? -8 : 8), from->y + 4},
                       scene_is_east ? "end" : "start", "satellite");
    labels += words_at({to->x + (scene_is_east ? 10 : -10), to->y - 10},
                       scene_is_east ? "start" : "end", "scene");
  }
  content += "<path class=\"footprint small\" d=\"" + polygon(map, footprint.corners) + "\"/>";
  const LocalMap::Graticule graticule = map.graticule();
  return svg(
      "The satellite's track on the ground, and its line of sight",
      clipped(graticule.lines + content, number) + graticule.labels + labels + map.scale_bar(),
      number);
}

}  // namespace report
