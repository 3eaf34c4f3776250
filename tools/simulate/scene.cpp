#include "tools/simulate/scene.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

#include "tools/simulate/cosar.h"

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
  scene.line_spacing_seconds = 1 / scene.prf;
  scene.sample_spacing_seconds = 1 / scene.rsf;
  centre_lines(scene, (scene.options.lines - 1) * line_microseconds / 2);
  const double half = (scene.options.samples - 1) * scene.sample_spacing_seconds / 2;
  const double middle =
      delay_of(to_radar(scene.orbit, scene.centre).range) + scene.options.delays.range();
  scene.near_time = middle - half;
  scene.far_time = middle + half;
}

void lay_out_ground_range(Scene& scene) {
  constexpr double spacing = 2.75;  // m
  scene.line_spacing_metres = scene.sample_spacing_metres = spacing;
  const double duration = (scene.options.lines - 1) * spacing / scene.ground_velocity;
  centre_lines(scene, std::round(duration / 2 / microsecond));
  const double extent = (scene.options.samples - 1) * spacing;
  scene.ground_range = fit_ground_range(scene.orbit, {scene.centre, extent});
  scene.ground_range->reference += scene.options.delays.range();
  scene.ground_range->last += scene.options.delays.range();
  scene.near_time = scene.ground_range->reference;
  scene.far_time = scene.ground_range->slant_time(extent);
}

// The geocoded image's times and ranges are those of its corners.
void lay_out_map(Scene& scene) {
  constexpr double spacing = 2.5;  // m
  scene.line_spacing_metres = scene.sample_spacing_metres = spacing;
  const MapProjection projection = scene.options.polar_projection
                                       ? MapProjection::ups_at(scene.centre)
                                       : MapProjection::utm_at(scene.centre);
  const MapPoint middle = projection.to_map(scene.centre);
  const auto snapped = [](double value) { return std::round(value / spacing) * spacing; };
  scene.map = MapGrid{projection,
                      {snapped(middle.easting - (scene.options.samples - 1) * spacing / 2),
                       snapped(middle.northing + (scene.options.lines - 1) * spacing / 2)},
                      spacing};
  scene.near_time = scene.far_time =
      delay_of(to_radar(scene.orbit, scene.centre).range) + scene.options.delays.range();
  for (const Pixel& corner : corners_of(scene)) {
    const RadarPoint seen = to_radar(scene.orbit, scene.to_average_ground(corner));
    const double time = seen.time + scene.options.delays.azimuth_shift;
    const double delay = delay_of(seen.range) + scene.options.delays.range();
    scene.start = std::min(scene.start, time);
    scene.stop = std::max(scene.stop, time);
    scene.near_time = std::min(scene.near_time, delay);
    scene.far_time = std::max(scene.far_time, delay);
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

constexpr double eec_relief = 40;  // m, to either side, where an EEC has no terrain model

RadarPoint geometric(RasterTimes times, const SignalDelays& delays) {
  return {times.azimuth - delays.azimuth_shift, range_of(times.range - delays.range())};
}

void refuse(bool wrong, const char* text) {
  if (wrong) throw std::invalid_argument(text);
}

void check(const Options& options) {
  refuse(options.lines < 64 || options.lines > 40000, "lines must be 64 to 40000");
  refuse(options.samples < 64 || options.samples > 40000, "samples must be 64 to 40000");
  refuse(std::abs(options.latitude) > 90 || std::abs(options.longitude) > 180,
         "the centre must be a latitude and a longitude in degrees");
  refuse(options.incidence < 15 || options.incidence > 60, "incidence must be 15 to 60 degrees");
  refuse(options.variant != Variant::mgd && options.start_with != Options().start_with,
         "only an MGD raster can begin with another corner");
  refuse(options.polarisations.empty() || options.polarisations.size() > 4,
         "one to four polarisations, please");
  refuse(!(options.relief >= 0 && options.relief <= 8000), "relief must be 0 to 8000 metres");
  refuse(options.relief > 0 && !options.terrain_file.empty(),
         "a terrain model comes from a file or is made, not both");
  refuse((options.relief > 0 || !options.terrain_file.empty()) && options.variant == Variant::gec,
         "a GEC lies on the ellipsoid and has no terrain model");
  refuse(!(std::abs(options.delays.troposphere) <= 1e-6 &&
           std::abs(options.delays.ionosphere) <= 1e-6),
         "delays must be -1000 to 1000 nanoseconds");
  refuse(!(std::abs(options.delays.azimuth_shift) <= 0.01),
         "the azimuth shift must be -10000 to 10000 microseconds");
  refuse(options.variant != Variant::ssc && options.cosar != CosarOptions(),
         "only SSC images have a sample type, bursts, record padding and an edge taper");
  refuse(options.cosar.bursts > 1 && options.mode != Mode::scansar,
         "several bursts need ScanSAR mode");
  check_cosar(options.cosar, options.lines, options.samples);
}

}  // namespace

Geodetic Scene::to_ground(Pixel pixel) const {
  if (!map) return ground_at(times_of(pixel));
  Geodetic place = to_average_ground(pixel);
  place.height = terrain_height(place.latitude_radians, place.longitude_radians);
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

Geodetic Scene::annotated_place(Pixel pixel) const {
  if (map) return to_average_ground(pixel);
  const RasterTimes times = times_of(pixel);
  return simulate::to_ground(orbit,
                             {times.azimuth - options.delays.azimuth_shift, range_of(times.range)},
                             options.height, centre);
}

RasterTimes Scene::annotated_times(const Geodetic& place) const {
  const RadarPoint seen = to_radar(orbit, place);
  return {seen.time + options.delays.azimuth_shift, delay_of(seen.range)};
}

RadarPoint Scene::seen_in(Pixel pixel) const {
  if (map) return to_radar(orbit, to_ground(pixel));
  return geometric(times_of(pixel), options.delays);
}

RasterTimes Scene::times_of(Pixel pixel) const {
  if (map) {
    const RadarPoint seen = seen_in(pixel);
    return {seen.time + options.delays.azimuth_shift,
            delay_of(seen.range) + options.delays.range()};
  }
  const double line = late(options.start_with) ? options.lines - 1 - pixel.line : pixel.line;
  const double sample = far(options.start_with) ? options.samples - 1 - pixel.sample : pixel.sample;
  return {start + line * (stop - start) / (options.lines - 1),
          ground_range ? ground_range->slant_time(sample * sample_spacing_metres)
                       : near_time + sample * sample_spacing_seconds};
}

Geodetic Scene::ground_at(RasterTimes times) const {
  const RadarPoint seen = geometric(times, options.delays);
  if (!terrain) {
    const Geodetic place = simulate::to_ground(orbit, seen, options.height, centre);
    if (options.variant != Variant::eec) return place;
  }
  // Along the arc of one range the terrain lies below the highest place and above the lowest one.
  const auto [lowest, highest] = height_range();
  const auto rise_at = [&](double height) {
    const Geodetic place = simulate::to_ground(orbit, seen, height, centre);
    return terrain_height(place.latitude_radians, place.longitude_radians) - height;
  };
  constexpr double step = 10;     // m; a narrower peak that is seen at several heights is missed
  constexpr double close = 1e-6;  // m
  double above = highest + 1;
  double below = above - step;
  while (below > lowest && rise_at(below) < 0) {
    above = below;
    below -= step;
  }
  while (above - below > close) {
    const double middle = (above + below) / 2;
    (rise_at(middle) < 0 ? above : below) = middle;
  }
  return simulate::to_ground(orbit, seen, (above + below) / 2, centre);
}

Pixel Scene::to_pixel(const Geodetic& place) const {
  if (map) {
    const MapPoint point = map->projection.to_map(place);
    return {(map->upper_left.northing - point.northing) / map->spacing,
            (point.easting - map->upper_left.easting) / map->spacing};
  }
  const RadarPoint seen = to_radar(orbit, place);
  return pixel_at(
      {seen.time + options.delays.azimuth_shift, delay_of(seen.range) + options.delays.range()});
}

Pixel Scene::pixel_at(RasterTimes times) const {
  if (map) return to_pixel(ground_at(times));
  const double line = (times.azimuth - start) / (stop - start) * (options.lines - 1);
  const double sample = ground_range
                            ? ground_range->ground_range(times.range) / sample_spacing_metres
                            : (times.range - near_time) / sample_spacing_seconds;
  return {late(options.start_with) ? options.lines - 1 - line : line,
          far(options.start_with) ? options.samples - 1 - sample : sample};
}

double Scene::terrain_height(double latitude_radians, double longitude_radians) const {
  if (terrain) return terrain->height_at(latitude_radians, longitude_radians);
  if (options.variant != Variant::eec) return options.height;
  return options.height +
         eec_relief * std::sin(latitude_radians * 9000) * std::cos(longitude_radians * 7000);
}

std::pair<double, double> Scene::height_range() const {
  if (terrain) return {terrain->lowest(), terrain->highest()};
  return {options.height - eec_relief, options.height + eec_relief};
}

double Scene::heading() const {
  const Vector3 v = orbit.at(0).velocity;
  const double sl = std::sin(centre.longitude_radians);
  const double cl = std::cos(centre.longitude_radians);
  const double sp = std::sin(centre.latitude_radians);
  const double cp = std::cos(centre.latitude_radians);
  const double east = -sl * v.x + cl * v.y;
  const double north = -sp * cl * v.x - sp * sl * v.y + cp * v.z;
  const double angle = std::atan2(east, north) / degree;
  return angle < 0 ? angle + 360 : angle;
}

GroundSpacing Scene::ground_spacing() const {
  if (!is_complex()) return {line_spacing_metres, sample_spacing_metres};
  return {ground_velocity * line_spacing_seconds,
          range_of(sample_spacing_seconds) / std::sin(incidence_at(centre))};
}

TerrainPlan terrain_plan(const Scene& scene) {
  constexpr double margin = 5000;  // m, for a geolocation grid that reaches beyond the image
  const GroundSpacing spacing = scene.ground_spacing();
  const double half_diagonal = std::hypot(spacing.line_metres * scene.options.lines,
                                          spacing.sample_metres * scene.options.samples) /
                               2;
  // Hills are seen from up to four times their height away, at 15 degrees of incidence.
  return {scene.centre, scene.options.relief, half_diagonal + 4 * scene.options.relief + margin};
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
  if (options.relief > 0) scene.terrain = make_terrain(terrain_plan(scene));
  if (!options.terrain_file.empty()) scene.terrain = read_terrain(options.terrain_file);
  scene.epoch = Utc::parse(options.start).after(-scene.start);
  scene.states = state_times(scene);
  return scene;
}

std::vector<Target> place_targets(const Scene& scene) {
  std::vector<Target> targets;
  const Options& o = scene.options;
  for (const Pixel& pixel : target_pixels(o.lines, o.samples, o.targets)) {
    targets.push_back({"P" + std::to_string(targets.size() + 1), scene.to_ground(pixel), pixel});
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
