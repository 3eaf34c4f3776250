#include "tools/simulate/scene.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace simulate {

namespace {

bool late(const std::string& corner) {
  return corner.starts_with("LATEAZ");
}
bool far(const std::string& corner) {
  return corner.ends_with("FARRG");
}

constexpr double microsecond = 1e-6;
constexpr double line_microseconds = 270;  // even, for a scene's half to be a whole number of them

// The scene's middle line is seen at time 0.
void centre_lines(Scene& scene, double half_microseconds) {
  scene.start = -half_microseconds * microsecond;
  scene.stop = half_microseconds * microsecond;
}

void lay_out_slant_range(Scene& scene) {
  scene.line_spacing = 1 / scene.prf;
  scene.sample_spacing = 1 / scene.rsf;
  centre_lines(scene, (scene.options.lines - 1) * line_microseconds / 2);
  const double half = (scene.options.samples - 1) * scene.sample_spacing / 2;
  const double middle = delay_of(to_radar(scene.orbit, scene.centre).range);
  scene.near_time = middle - half;
  scene.far_time = middle + half;
}

void lay_out_ground_range(Scene& scene) {
  constexpr double spacing = 2.75;  // m
  scene.line_spacing = scene.sample_spacing = spacing;
  const double duration = (scene.options.lines - 1) * spacing / scene.ground_velocity;
  centre_lines(scene, std::round(duration / 2 / microsecond));
  const double extent = (scene.options.samples - 1) * spacing;
  scene.ground_range = fit_ground_range(scene.orbit, {scene.centre, extent});
  scene.near_time = scene.ground_range->reference;
  scene.far_time = scene.ground_range->slant_time(extent);
}

// The geocoded image's times and ranges are those of its corners.
void lay_out_map(Scene& scene) {
  constexpr double spacing = 2.5;  // m
  scene.line_spacing = scene.sample_spacing = spacing;
  const MapProjection projection = scene.options.polar_projection
                                       ? MapProjection::ups_at(scene.centre)
                                       : MapProjection::utm_at(scene.centre);
  const MapPoint middle = projection.to_map(scene.centre);
  const auto snapped = [](double value) { return std::round(value / spacing) * spacing; };
  scene.map = MapGrid{projection,
                      {snapped(middle.easting - (scene.options.samples - 1) * spacing / 2),
                       snapped(middle.northing + (scene.options.lines - 1) * spacing / 2)},
                      spacing};
  scene.near_time = scene.far_time = delay_of(to_radar(scene.orbit, scene.centre).range);
  for (const Pixel& corner : corners_of(scene)) {
    const RadarPoint seen = to_radar(scene.orbit, scene.to_average_ground(corner));
    scene.start = std::min(scene.start, seen.time);
    scene.stop = std::max(scene.stop, seen.time);
    scene.near_time = std::min(scene.near_time, delay_of(seen.range));
    scene.far_time = std::max(scene.far_time, delay_of(seen.range));
  }
  scene.start = std::floor(scene.start / microsecond) * microsecond;
  scene.stop = std::ceil(scene.stop / microsecond) * microsecond;
}

// Speed at which the point that is abeam at the centre's range moves over the ground.
double ground_velocity(const Orbit& orbit, const Geodetic& centre) {
  const RadarPoint middle = to_radar(orbit, centre);
  const auto at = [&](double time) {
    return to_earth_fixed(to_ground(orbit, {time, middle.range}, centre.height, centre));
  };
  return length(at(middle.time + 0.5) - at(middle.time - 0.5));
}

StateTimes state_times(const Scene& scene) {
  constexpr std::size_t usual_count = 12;
  constexpr double spacing = 10;  // s
  constexpr double lead = 50;     // s, of the first state before the scene
  constexpr double trail = 40;    // s, of the last one behind it, at least
  const double first = scene.utc(scene.start - lead).whole_second().since(scene.epoch);
  const auto needed = static_cast<std::size_t>((scene.stop + trail - first) / spacing) + 2;
  return {first, spacing, std::max(usual_count, needed)};
}

void check(const Options& options) {
  const auto refuse = [](bool wrong, const char* text) {
    if (wrong) throw std::invalid_argument(text);
  };
  refuse(options.lines < 64 || options.lines > 40000, "lines must be 64 to 40000");
  refuse(options.samples < 64 || options.samples > 40000, "samples must be 64 to 40000");
  refuse(std::abs(options.latitude) > 90 || std::abs(options.longitude) > 180,
         "the centre must be a latitude and a longitude in degrees");
  refuse(options.incidence < 15 || options.incidence > 60, "incidence must be 15 to 60 degrees");
  refuse(options.variant != Variant::mgd && options.start_with != Options().start_with,
         "only an MGD raster can begin with another corner");
  refuse(options.polarisations.empty() || options.polarisations.size() > 4,
         "one to four polarisations, please");
}

}  // namespace

Geodetic Scene::to_ground(Pixel pixel) const {
  Geodetic place = to_average_ground(pixel);
  if (map) place.height = terrain_height(place.latitude, place.longitude);
  return place;
}

Geodetic Scene::to_average_ground(Pixel pixel) const {
  if (map) {
    return map->projection.to_ground({map->upper_left.easting + pixel.sample * map->spacing,
                                      map->upper_left.northing - pixel.line * map->spacing},
                                     options.height);
  }
  return simulate::to_ground(orbit, seen_in(pixel), options.height, centre);
}

RadarPoint Scene::seen_in(Pixel pixel) const {
  if (map) return to_radar(orbit, to_ground(pixel));
  const double line = late(options.start_with) ? options.lines - 1 - pixel.line : pixel.line;
  const double sample = far(options.start_with) ? options.samples - 1 - pixel.sample : pixel.sample;
  const double time = start + line * (stop - start) / (options.lines - 1);
  const double delay = ground_range ? ground_range->slant_time(sample * sample_spacing)
                                    : near_time + sample * sample_spacing;
  return {time, range_of(delay)};
}

Pixel Scene::to_pixel(const Geodetic& place) const {
  if (map) {
    const MapPoint point = map->projection.to_map(place);
    return {(map->upper_left.northing - point.northing) / map->spacing,
            (point.easting - map->upper_left.easting) / map->spacing};
  }
  const RadarPoint seen = to_radar(orbit, place);
  const double line = (seen.time - start) / (stop - start) * (options.lines - 1);
  const double delay = delay_of(seen.range);
  const double sample = ground_range ? ground_range->ground_range(delay) / sample_spacing
                                     : (delay - near_time) / sample_spacing;
  return {late(options.start_with) ? options.lines - 1 - line : line,
          far(options.start_with) ? options.samples - 1 - sample : sample};
}

double Scene::terrain_height(double latitude, double longitude) const {
  if (options.variant != Variant::eec) return options.height;
  return options.height + 40 * std::sin(latitude * 9000) * std::cos(longitude * 7000);
}

double Scene::heading() const {
  const Vector3 v = orbit.at(0).velocity;
  const double sl = std::sin(centre.longitude);
  const double cl = std::cos(centre.longitude);
  const double sp = std::sin(centre.latitude);
  const double cp = std::cos(centre.latitude);
  const double east = -sl * v.x + cl * v.y;
  const double north = -sp * cl * v.x - sp * sl * v.y + cp * v.z;
  const double angle = std::atan2(east, north) / degree;
  return angle < 0 ? angle + 360 : angle;
}

Pixel Scene::ground_spacing() const {
  if (!is_complex()) return {line_spacing, sample_spacing};
  return {ground_velocity * line_spacing,
          range_of(sample_spacing) / std::sin(incidence_at(centre))};
}

Scene make_scene(const Options& options) {
  check(options);
  const Geodetic centre{options.latitude * degree, options.longitude * degree, options.height};
  Scene scene{.options = options,
              .orbit = Orbit(solve_acquisition(
                  {centre, options.pass, options.look, options.incidence * degree})),
              .centre = centre};
  scene.prf = 1 / (line_microseconds * microsecond);
  scene.rsf = options.mode == Mode::spotlight ? 165e6 : 110e6;
  scene.ground_velocity = ground_velocity(scene.orbit, centre);
  switch (options.variant) {
    case Variant::ssc:
      lay_out_slant_range(scene);
      break;
    case Variant::mgd:
      lay_out_ground_range(scene);
      break;
    default:
      lay_out_map(scene);
  }
  scene.epoch = Utc::parse(options.start).after(-scene.start);
  scene.states = state_times(scene);
  return scene;
}

std::vector<Target> place_targets(const Scene& scene) {
  std::vector<Target> targets;
  const Options& o = scene.options;
  const auto side = static_cast<int>(std::ceil(std::sqrt(static_cast<double>(o.targets))));
  for (int i = 0; i < o.targets; ++i) {
    const int target_row = i / side;
    const double row = (target_row + 0.5) / side;
    const double column = (i % side + 0.5) / side;
    // Off the grid by a part of a pixel that differs from target to target.
    const Pixel pixel{std::floor(row * o.lines) + 0.37 * (i % 3 - 1),
                      std::floor(column * o.samples) + 0.29 * ((i + 1) % 3 - 1)};
    targets.push_back({"P" + std::to_string(i + 1), scene.to_ground(pixel), pixel});
  }
  return targets;
}

std::array<Pixel, 4> corners_of(const Scene& scene) {
  const double last_line = scene.options.lines - 1;
  const double last_sample = scene.options.samples - 1;
  const bool bottom_up = !scene.map && late(scene.options.start_with);
  const bool right_to_left = !scene.map && far(scene.options.start_with);
  const double early = bottom_up ? last_line : 0;
  const double near = right_to_left ? last_sample : 0;
  return {{{early, near},
           {early, last_sample - near},
           {last_line - early, near},
           {last_line - early, last_sample - near}}};
}

}  // namespace simulate
