#include "rmdllib/radar_geometry.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <variant>

#include "gridkit/error.h"
#include "rmdllib/model_ephemeris.h"
#include "rmdllib/radar_generic_model.h"

namespace rmdllib {

namespace {

constexpr double speed_of_light = 299792458;  // m/s, by definition of the metre

using Model = std::span<const gridkit::DecodedField>;

// The value of a field of the model.
template <class T>
const T& field(Model model, std::string_view name) {
  const auto found =
      std::find_if(model.begin(), model.end(), [&](const auto& one) { return one.name == name; });
  const T* value = found == model.end() ? nullptr : std::get_if<T>(&found->value);
  if (value == nullptr) {
    throw gridkit::Error("the sensor model has no field " + std::string(name) + " of its type");
  }
  return *value;
}

double number(Model model, std::string_view name) {
  const double value = field<double>(model, name);
  if (std::isfinite(value)) return value;
  throw gridkit::Error("the sensor model's " + std::string(name) + " is no finite number");
}

std::vector<Vector3> vectors(Model model, const char* x, const char* y, const char* z) {
  const auto& xs = field<std::vector<double>>(model, x);
  const auto& ys = field<std::vector<double>>(model, y);
  const auto& zs = field<std::vector<double>>(model, z);
  if (xs.size() != ys.size() || xs.size() != zs.size()) {
    throw gridkit::Error("the sensor model's state vectors are not complete");
  }
  std::vector<Vector3> result(xs.size());
  for (std::size_t i = 0; i < xs.size(); ++i) result[i] = {xs[i], ys[i], zs[i]};
  return result;
}

OrbitTrack orbit_of(Model model) {
  std::vector<Vector3> positions = vectors(model, "rsx", "rsy", "rsz");
  const double interval = number(model, "time_interval");
  const double first = rmdl_FirstStateTime(
      number(model, "first_pt_secs_of_day"), interval, static_cast<std::int32_t>(positions.size()),
      number(model, "image_start_time"), number(model, "image_duration"));
  return {first, interval, std::move(positions), vectors(model, "vsx", "vsy", "vsz")};
}

bool runs_back(Model model, const char* name) {
  return field<gridkit::EnumerationItem>(model, name).number == RMDL_DECREASE;
}

}  // namespace

RadarGeometry::RadarGeometry(Model model)
    : lines_(field<std::int32_t>(model, "num_lines")),
      samples_(field<std::int32_t>(model, "num_samples")),
      start_(number(model, "image_start_time")),
      line_interval_(number(model, "image_duration") / (lines_ - 1)),
      near_range_(number(model, "near_slant_range")),
      range_spacing_(number(model, "range_pix_spacing")),
      is_ground_range_(field<std::int32_t>(model, "projection") != rmdl_slant_range),
      lines_run_back_(runs_back(model, "time_dir_lines")),
      samples_run_back_(runs_back(model, "time_dir_pixels")),
      ground_to_slant_(field<std::vector<double>>(model, "gnd2slt_coeffs")),
      side_(number(model, "look_side") < 0 ? LookSide::left : LookSide::right),
      average_height_(number(model, "target_height")),
      earth_(number(model, "semimajor"), number(model, "semiminor")),
      orbit_(orbit_of(model)) {
  if (lines_ < 2 || samples_ < 1 || !(line_interval_ > 0)) {
    throw gridkit::Error("the sensor model gives its lines no times");
  }
  if (!(range_spacing_ > 0) || !(near_range_ > 0)) {
    throw gridkit::Error("the sensor model gives its samples no ranges");
  }
  const bool has_polynomial = ground_to_slant_.size() > 1 && ground_to_slant_[1] > 0 &&
                              std::all_of(ground_to_slant_.begin(), ground_to_slant_.end(),
                                          [](double term) { return std::isfinite(term); });
  if (is_ground_range_ && !has_polynomial) {
    throw gridkit::Error("the sensor model has no polynomial from ground range to slant range");
  }
}

RadarGeometry RadarGeometry::with(const SignalCorrections& corrections) const {
  if (!std::isfinite(corrections.range_delay) || !std::isfinite(corrections.azimuth_shift)) {
    throw gridkit::Error("the corrections of the sensor model's times are no finite numbers");
  }
  RadarGeometry result = *this;
  result.corrections_ = corrections;
  return result;
}

double RadarGeometry::slant_range(double ground_range) const {
  double range = 0;
  for (std::size_t i = ground_to_slant_.size(); i-- > 0;) {
    range = range * ground_range + ground_to_slant_[i];
  }
  return range;
}

// Inverts the polynomial by Newton's method, from where its two lowest terms alone would end.
double RadarGeometry::ground_range(double slant_range) const {
  constexpr int most_steps = 30;
  constexpr double precision = 1e-8;  // m
  double ground = (slant_range - ground_to_slant_[0]) / ground_to_slant_[1];
  for (int step = 0; step < most_steps; ++step) {
    double value = 0;
    double slope = 0;
    for (std::size_t i = ground_to_slant_.size(); i-- > 0;) {
      slope = slope * ground + value;
      value = value * ground + ground_to_slant_[i];
    }
    const double change = (value - slant_range) / slope;
    ground -= change;
    if (std::abs(change) < precision) return ground;
  }
  throw gridkit::Error("the sensor model's polynomial gives that slant range no ground range");
}

RadarPoint RadarGeometry::raster_of(Pixel pixel) const {
  const double line = lines_run_back_ ? lines_ - 1 - pixel.line : pixel.line;
  const double sample = samples_run_back_ ? samples_ - 1 - pixel.sample : pixel.sample;
  const double along = sample * range_spacing_;
  return {start_ + line * line_interval_,
          is_ground_range_ ? slant_range(along) : near_range_ + along};
}

RadarPoint RadarGeometry::corrected(RadarPoint raster) const {
  return {raster.time - corrections_.azimuth_shift,
          raster.range - corrections_.range_delay * speed_of_light / 2};
}

Pixel RadarGeometry::pixel_of(RadarPoint point) const {
  const double line = (point.time + corrections_.azimuth_shift - start_) / line_interval_;
  const double range = point.range + corrections_.range_delay * speed_of_light / 2;
  const double along = is_ground_range_ ? ground_range(range) : range - near_range_;
  const double sample = along / range_spacing_;
  return {lines_run_back_ ? lines_ - 1 - line : line,
          samples_run_back_ ? samples_ - 1 - sample : sample};
}

Geodetic RadarGeometry::ground_of(Pixel pixel, double height) const {
  return to_ground(orbit_, earth_, side_, radar_of(pixel), height);
}

Pixel RadarGeometry::pixel_of(const Geodetic& place) const {
  const double middle = start_ + line_interval_ * (lines_ - 1) / 2;
  const Vector3 target = earth_.to_earth_fixed(place);
  if (dot(target, orbit_.at(middle).position) < 0) {
    throw gridkit::Error("that place lies on the far side of the Earth");
  }
  const RadarPoint seen = to_radar(orbit_, earth_, place, middle);
  const Motion satellite = orbit_.at(seen.time);
  const Vector3 sight = target - satellite.position;
  if (dot(Ellipsoid::up(place), sight) > 0) {
    throw gridkit::Error("that place lies beyond the satellite's horizon");
  }
  const Vector3 right = cross(satellite.velocity, satellite.position);
  const bool is_right = dot(right, sight) > 0;
  if (is_right != (side_ == LookSide::right)) {
    throw gridkit::Error("that place lies on the side that the radar does not look to");
  }
  return pixel_of(seen);
}

}  // namespace rmdllib
