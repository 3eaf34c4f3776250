#include "tools/simulate/scene.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace simulate {

namespace {

constexpr int state_count = 12;
constexpr double state_spacing = 10;  // s
constexpr double lead_time = 50;      // s, of the first state before the scene

bool late(const std::string& corner) {
  return corner.starts_with("LATEAZ");
}
bool far(const std::string& corner) {
  return corner.ends_with("FARRG");
}

double range_of(double time) {
  return time * speed_of_light / 2;
}
double time_of(double range) {
  return 2 * range / speed_of_light;
}

// States at whole UTC seconds, the first some 50 s before the scene.
Orbit make_orbit(const State& at_epoch, const Utc& epoch, double start) {
  const double first = epoch.after(start - lead_time).whole_second().since(epoch);
  const int count = std::max(
      state_count, static_cast<int>(std::ceil((2 * lead_time - 2 * start) / state_spacing)));
  std::vector<State> states;
  states.reserve(static_cast<std::size_t>(count));
  for (int i = 0; i < count; ++i) states.push_back(propagate(at_epoch, first + state_spacing * i));
  return {first, state_spacing, std::move(states)};
}

// Least squares of degree 5 over samples (x in [0, 1], y), without a constant term.
std::array<double, 6> fit_through_zero(const std::vector<double>& x, const std::vector<double>& y) {
  constexpr std::size_t n = 5;
  std::array<std::array<long double, n + 1>, n> a{};
  for (std::size_t k = 0; k < x.size(); ++k) {
    std::array<long double, n> powers{};
    long double p = 1;
    for (auto& power : powers) power = p *= x[k];
    for (std::size_t i = 0; i < n; ++i) {
      for (std::size_t j = 0; j < n; ++j) a[i][j] += powers[i] * powers[j];
      a[i][n] += powers[i] * static_cast<long double>(y[k]);
    }
  }
  for (std::size_t i = 0; i < n; ++i) {
    for (std::size_t r = 0; r < n; ++r) {
      if (r == i) continue;
      const long double factor = a[r][i] / a[i][i];
      for (std::size_t c = i; c <= n; ++c) a[r][c] -= factor * a[i][c];
    }
  }
  std::array<double, 6> coefficients{};
  for (std::size_t i = 0; i < n; ++i) {
    coefficients[i + 1] = static_cast<double>(a[i][n] / a[i][i]);
  }
  return coefficients;
}

// Ground range along the centre line, from the place seen at the nearest range.
GroundRangePolynomial fit_ground_range(const Scene& scene, double near_range, double far_range) {
  constexpr int segments = 60;
  std::vector<double> x;
  std::vector<double> y;
  Vector3 before{};
  double distance = 0;
  Geodetic place = scene.centre;
  for (int i = 0; i <= segments; ++i) {
    const double fraction = static_cast<double>(i) / segments;
    const double range = near_range + fraction * (far_range - near_range);
    place = to_ground(scene.orbit, {0, range}, scene.options.height, place);
    const Vector3 here = to_earth_fixed(place);
    if (i > 0) distance += length(here - before);
    before = here;
    x.push_back(fraction);
    y.push_back(distance);
  }
  GroundRangePolynomial fitted;
  fitted.reference = time_of(near_range);
  fitted.last = time_of(far_range);
  fitted.coefficients = fit_through_zero(x, y);
  double scale = 1;
  for (double& c : fitted.coefficients) {
    c /= scale;
    scale *= fitted.last - fitted.reference;
  }
  return fitted;
}

void lay_out_slant_range(Scene& scene) {
  scene.line_spacing = 1 / scene.prf;
  scene.sample_spacing = 1 / scene.rsf;
  const double half = (scene.options.samples - 1) * scene.sample_spacing / 2;
  const double middle = time_of(to_radar(scene.orbit, scene.centre).range);
  scene.near_time = middle - half;
  scene.far_time = middle + half;
}

void lay_out_ground_range(Scene& scene, double incidence) {
  constexpr double spacing = 2.75;  // m
  scene.line_spacing = scene.sample_spacing = spacing;
  const double extent = (scene.options.samples - 1) * spacing;
  const double middle = to_radar(scene.orbit, scene.centre).range;
  const double near_range = middle - extent / 2 * std::sin(incidence);
  const double far_range = middle + extent / 2 * std::sin(incidence) * 1.25 + 100;
  scene.ground_range = fit_ground_range(scene, near_range, far_range);
  scene.near_time = scene.ground_range->reference;
  scene.far_time = scene.ground_range->slant_time(extent);
}

// The geocoded image's times and ranges are those of its corners and edges.
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
  scene.start = scene.stop = to_radar(scene.orbit, scene.centre).time;
  scene.near_time = scene.far_time = time_of(to_radar(scene.orbit, scene.centre).range);
  for (const Pixel& corner : corners_of(scene)) {
    const RadarPoint seen = to_radar(scene.orbit, scene.to_ground(corner));
    scene.start = std::min(scene.start, seen.time);
    scene.stop = std::max(scene.stop, seen.time);
    scene.near_time = std::min(scene.near_time, time_of(seen.range));
    scene.far_time = std::max(scene.far_time, time_of(seen.range));
  }
}

// Seconds that the image's lines take, before the geometry is known in detail.
double duration_of(const Options& options, double prf) {
  constexpr double usual_ground_velocity = 7050;
  switch (options.variant) {
    case Variant::ssc:
      return (options.lines - 1) / prf;
    case Variant::mgd:
      return (options.lines - 1) * 2.75 / usual_ground_velocity;
    default:
      return (options.lines + options.samples) * 2.5 / usual_ground_velocity;
  }
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
  refuse(options.polarisations.empty() || options.polarisations.size() > 4,
         "one to four polarisations, please");
}

}  // namespace

double GroundRangePolynomial::ground_range(double time) const {
  const double d = time - reference;
  double sum = 0;
  for (auto c = coefficients.rbegin(); c != coefficients.rend(); ++c) sum = sum * d + *c;
  return sum;
}

double GroundRangePolynomial::slant_time(double ground) const {
  double time = reference + ground / coefficients[1];
  for (int i = 0; i < 40; ++i) {
    const double d = time - reference;
    double slope = 0;
    for (std::size_t k = 5; k >= 1; --k) {
      slope = slope * d + static_cast<double>(k) * coefficients[k];
    }
    const double miss = ground_range(time) - ground;
    time -= miss / slope;
    if (std::abs(miss) < 1e-9) break;
  }
  return time;
}

Geodetic Scene::to_ground(Pixel pixel) const {
  if (map) {
    const Geodetic flat =
        map->projection.to_ground({map->upper_left.easting + pixel.sample * map->spacing,
                                   map->upper_left.northing - pixel.line * map->spacing},
                                  0);
    return {flat.latitude, flat.longitude, terrain_height(flat.latitude, flat.longitude)};
  }
  const double line = late(options.start_with) ? options.lines - 1 - pixel.line : pixel.line;
  const double sample = far(options.start_with) ? options.samples - 1 - pixel.sample : pixel.sample;
  const double time = start + line * (stop - start) / (options.lines - 1);
  const double delay = ground_range ? ground_range->slant_time(sample * sample_spacing)
                                    : near_time + sample * sample_spacing;
  return simulate::to_ground(orbit, {time, range_of(delay)}, options.height, centre);
}

Pixel Scene::to_pixel(const Geodetic& place) const {
  if (map) {
    const MapPoint point = map->projection.to_map(place);
    return {(map->upper_left.northing - point.northing) / map->spacing,
            (point.easting - map->upper_left.easting) / map->spacing};
  }
  const RadarPoint seen = to_radar(orbit, place);
  const double line = (seen.time - start) / (stop - start) * (options.lines - 1);
  const double delay = time_of(seen.range);
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
  const double prf = 3700;
  const Geodetic centre{options.latitude * degree, options.longitude * degree, options.height};
  const double half = duration_of(options, prf) / 2;
  const Utc epoch = Utc::parse(options.start).after(half);
  const State at_epoch =
      solve_acquisition({centre, options.pass, options.look, options.incidence * degree});
  Scene scene{options,
              epoch,
              make_orbit(at_epoch, epoch, -half),
              centre,
              prf,
              options.mode == Mode::spotlight ? 165e6 : 110e6,
              -half,
              half,
              0,
              0,
              0,
              0,
              0,
              std::nullopt,
              std::nullopt};
  const RadarPoint middle = to_radar(scene.orbit, centre);
  const Geodetic ahead =
      to_ground(scene.orbit, {middle.time + 0.5, middle.range}, options.height, centre);
  const Geodetic behind =
      to_ground(scene.orbit, {middle.time - 0.5, middle.range}, options.height, centre);
  scene.ground_velocity = length(to_earth_fixed(ahead) - to_earth_fixed(behind));
  switch (options.variant) {
    case Variant::ssc:
      lay_out_slant_range(scene);
      break;
    case Variant::mgd:
      lay_out_ground_range(scene, options.incidence * degree);
      scene.stop = scene.start + (options.lines - 1) * scene.line_spacing / scene.ground_velocity;
      break;
    default:
      lay_out_map(scene);
  }
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
  return {{{0, 0}, {0, last_sample}, {last_line, 0}, {last_line, last_sample}}};
}

}  // namespace simulate
