#include "tools/gridkit/report/footprint.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <optional>

#include "tools/gridkit/report/html.h"
#include "tools/gridkit/report/labels.h"
#include "tools/gridkit/report/local_map.h"
#include "tools/gridkit/report/place.h"

namespace report {

namespace {

using rmdllib::Ellipsoid;
using rmdllib::Geodetic;
using rmdllib::Vector3;

std::string at(const Place& place) {
  return fixed(place.x, 1) + ' ' + fixed(place.y, 1);
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

Place moved(const Place& place, const Place& by) {
  return {place.x + by.x, place.y + by.y};
}

Label moved(const Label& label, const Place& by) {
  return {moved(label.at, by), label.anchor, label.words};
}

Box moved(const Box& box, const Place& by) {
  return {box.left + by.x, box.top + by.y, box.right + by.x, box.bottom + by.y};
}

// Where to begin what takes so much room around its beginning: of the frame's upper corners and its
// lower right one, the one farthest from the footprint's, of those without a label. The scale
// stands in the fourth.
std::optional<Place> emptiest_corner(const LocalMap& map, const std::vector<Geodetic>& corners,
                                     const Box& room, const Labels& labels) {
  constexpr double inset = 6;
  const double west = LocalMap::frame.left + inset - room.left;
  const double east = LocalMap::frame.right - inset - room.right;
  const double north = LocalMap::frame.top + inset - room.top;
  const double south = LocalMap::frame.bottom - inset - room.bottom;
  std::optional<Place> best;
  double farthest = -1;
  for (const Place candidate : {Place{east, north}, Place{west, north}, Place{east, south}}) {
    const Box box = moved(room, candidate);
    if (!labels.is_free(box)) continue;
    const Place middle = {(box.left + box.right) / 2, (box.top + box.bottom) / 2};
    double nearest = LocalMap::width;
    for (const Geodetic& corner : corners) {
      const auto place = map.place_of(corner);
      if (!place) continue;
      nearest = std::min(nearest, std::hypot(place->x - middle.x, place->y - middle.y));
    }
    if (nearest <= farthest) continue;
    farthest = nearest;
    best = candidate;
  }
  return best;
}

// An arrow from (0, 0) and its name.
struct Direction {
  Place tip;
  Label name;
};

std::optional<Direction> direction(const Vector3& way, const Geodetic& scene, const char* name) {
  const double east = dot(way, Ellipsoid::east(scene));
  const double north = dot(way, Ellipsoid::north(scene));
  const double size = std::hypot(east, north);
  if (!(size > 0)) return std::nullopt;
  constexpr double reach = 26;
  // A word is wider than high.
  const double off = reach + 9 + 12 * std::abs(east) / size;
  return Direction{
      {east / size * reach, -north / size * reach},
      {{east / size * off, -north / size * off + 4}, Anchor::middle, name},
  };
}

// Two arrows in a corner of the map, of the directions in which the satellite flew and looked.
std::string set_directions(const LocalMap& map, const Footprint& footprint, Labels& labels) {
  const auto state = state_at(footprint.orbit, footprint.duration / 2);
  if (!state) return {};
  const Vector3 centre = middle_of(footprint.corners);
  const Geodetic scene = Ellipsoid::wgs84().to_geodetic(centre);
  const auto flight = direction(state->velocity, scene, "flight");
  const auto look = direction(centre - state->position, scene, "look");
  if (!flight || !look) return {};
  constexpr double heads = 4;  // what an arrow's head and its line take beside it
  Box room = {-heads, -heads, heads, heads};
  for (const auto& [tip, name] : {*flight, *look}) {
    room = around(room, {tip.x - heads, tip.y - heads, tip.x + heads, tip.y + heads});
    room = around(room, box_of(name));
  }
  const auto from = emptiest_corner(map, footprint.corners, room, labels);
  if (!from) return {};
  std::string arrows;
  for (const auto& [tip, name] : {*flight, *look}) {
    arrows += arrow(*from, moved(tip, *from), "direction");
    labels.set(LocalMap::frame, Labels::Style::halo, {moved(name, *from)});
  }
  return arrows;
}

// Beside a corner of the footprint, outside of it where there is room.
void set_first_pixel(const Place& corner, const Place& opposite, Labels& labels) {
  constexpr const char* words = "first pixel";
  const bool is_west = corner.x < opposite.x;
  const bool is_north = corner.y < opposite.y;
  const double out_x = is_west ? -5 : 5;
  const double out_y = is_north ? -5 : 14;  // a baseline's, above or below
  const double in_y = is_north ? 14 : -5;
  const Anchor out = is_west ? Anchor::end : Anchor::start;
  const Anchor in = is_west ? Anchor::start : Anchor::end;
  labels.set(LocalMap::frame, Labels::Style::halo,
             {{moved(corner, {out_x, out_y}), out, words},
              {moved(corner, {out_x, in_y}), out, words},
              {moved(corner, {0, out_y}), Anchor::middle, words},
              {moved(corner, {-out_x, out_y}), in, words},
              {moved(corner, {-out_x, in_y}), in, words}});
}

// Names a place, on the side away from another.
void set_name(const char* words, const Place& place, const Place& other, Labels& labels) {
  const bool is_west = place.x < other.x;
  const double out = is_west ? -10 : 10;
  const Anchor anchor = is_west ? Anchor::end : Anchor::start;
  const Anchor opposite = is_west ? Anchor::start : Anchor::end;
  labels.set(LocalMap::frame, Labels::Style::halo,
             {{moved(place, {out, 4}), anchor, words},
              {moved(place, {out, -10}), anchor, words},
              {moved(place, {out, 18}), anchor, words},
              {moved(place, {-out, -10}), opposite, words},
              {moved(place, {-out, 18}), opposite, words}});
}

// The graticule and the scale, whose labels come first.
struct Grounds {
  std::string lines;
  std::string scale;
};

Grounds set_grounds(const LocalMap& map, Labels& labels) {
  const LocalMap::Graticule graticule = map.graticule();
  for (const Label& label : graticule.labels) {
    labels.set(LocalMap::drawing, Labels::Style::plain, {label});
  }
  const LocalMap::ScaleBar scale = map.scale_bar();
  labels.set(LocalMap::frame, Labels::Style::halo, {scale.label});
  labels.keep_free(scale.room);
  return {graticule.lines, scale.bar};
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
  Labels labels;
  const Grounds grounds = set_grounds(map, labels);
  const auto first = map.place_of(footprint.corners[0]);
  const auto opposite = map.place_of(footprint.corners[2]);
  if (first && opposite) set_first_pixel(*first, *opposite, labels);
  const std::string arrows = set_directions(map, footprint, labels);
  const std::string outline =
      "<path class=\"footprint\" d=\"" + polygon(map, footprint.corners) + "\"/>";
  return svg("The scene, north up. Dots: corners that the annotation states",
             clipped(draped(map, footprint.corners) + grounds.lines + outline + dots, number) +
                 grounds.scale + arrows + labels.svg(),
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
  Labels labels;
  const Grounds grounds = set_grounds(map, labels);
  const auto from = map.place_of(nadir);
  const auto to = map.place_of(scene);
  const auto last = map.place_of(track.back());
  const auto before = map.place_of(track[track.size() - 2]);
  if (last && before) content += arrow(*before, *last, "track");
  if (from && to) {
    content += arrow(*from, *to, "sight") + "<circle class=\"nadir\" cx=\"" + fixed(from->x, 1) +
               "\" cy=\"" + fixed(from->y, 1) + "\" r=\"3.5\"/>";
    set_name("satellite", *from, *to, labels);
    set_name("scene", *to, *from, labels);
  }
  content += "<path class=\"footprint small\" d=\"" + polygon(map, footprint.corners) + "\"/>";
  return svg("The satellite's track on the ground, and its line of sight",
             clipped(grounds.lines + content, number) + grounds.scale + labels.svg(), number);
}

}  // namespace report
