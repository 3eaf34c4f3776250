#include "rmdllib/model_ephemeris.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <span>
#include <string_view>

#include "gridkit/services/fail.h"
#include "rmdllib/hermite_orbit.h"
#include "rmdllib/quadratic_fit.h"

namespace {

using rmdllib::AxisState;
using rmdllib::HermiteOrbit;
using rmdllib::Quadratic;
using rmdllib::QuadraticFit;
using rmdllib::sample_count;
using rmdllib::Samples;

// A scene shorter than this still has a margin of this length, where the vectors allow it.
constexpr double shortest_margin = 1.0;  // s

// An integer's Decimal text, without the heap.
class Decimal {
 public:
  explicit Decimal(std::int64_t value)
      : end_(std::to_chars(text_.data(), text_.data() + text_.size(), value).ptr) {}
  operator std::string_view() const { return {text_.data(), end_}; }

 private:
  std::array<char, 20> text_{};
  const char* end_;
};

struct NamedArray {
  std::string_view name;
  const RadarArray& array;
};

struct NamedTime {
  std::string_view name;
  double seconds;
};

// Says why the record cannot be modelled; false then.
bool is_usable(const RadarGenericModel& model, gke_Report** err) {
  const auto refuse = [err](std::initializer_list<std::string_view> parts) {
    gridkit::fail(err, "rmdl_modelEphemeris", parts);
    return false;
  };
  if (model.num_pos_pts < 2) {
    return refuse({"an orbit needs two state vectors, this one has ", Decimal(model.num_pos_pts)});
  }
  for (const auto& [name, seconds] : {NamedTime{"first_pt_secs_of_day", model.first_pt_secs_of_day},
                                      {"time_interval", model.time_interval},
                                      {"image_start_time", model.image_start_time},
                                      {"image_duration", model.image_duration}}) {
    if (!std::isfinite(seconds)) return refuse({name, " is not finite"});
  }
  if (model.time_interval <= 0) return refuse({"time_interval is not positive"});
  for (const auto& [name, array] :
       {NamedArray{"rsx", model.rsx}, NamedArray{"rsy", model.rsy}, NamedArray{"rsz", model.rsz},
        NamedArray{"vsx", model.vsx}, NamedArray{"vsy", model.vsy}, NamedArray{"vsz", model.vsz}}) {
    if (array.elements == nullptr) return refuse({name, " is missing"});
    if (array.count < model.num_pos_pts) {
      return refuse({name, " has ", Decimal(array.count), " elements for ",
                     Decimal(model.num_pos_pts), " state vectors"});
    }
    for (std::int32_t i = 0; i < model.num_pos_pts; ++i) {
      if (!std::isfinite(array.elements[i])) {
        return refuse({name, "[", Decimal(i), "] is not finite"});
      }
    }
  }
  return true;
}

// The times that matter, in seconds after the first state vector.
struct Timeline {
  double scene_start;
  double scene_middle;
  double scene_end;  // not before scene_start
  double last_vector;
};

Timeline timeline_of(const RadarGenericModel& model) {
  const double first_vector =
      rmdl_FirstStateTime(model.first_pt_secs_of_day, model.time_interval, model.num_pos_pts,
                          model.image_start_time, model.image_duration);
  const double start = model.image_start_time - first_vector;
  const double end = start + model.image_duration;
  return {std::min(start, end), start + model.image_duration / 2, std::max(start, end),
          model.time_interval * (static_cast<double>(model.num_pos_pts) - 1)};
}

// Where the orbit is sampled, in seconds after the first state vector.
struct Window {
  double first;
  double last;
  Samples weights;
};

Window choose_window(const Timeline& times, double interval) {
  if (times.scene_end < 0 || times.scene_start > times.last_vector) {
    Window all{0, times.last_vector, {}};
    all.weights.fill(1);
    return all;
  }
  const double margin =
      std::min(interval, std::max(times.scene_end - times.scene_start, shortest_margin));
  Window chosen{std::max(times.scene_start - margin, 0.0),
                std::min(times.scene_end + margin, times.last_vector),
                {}};
  for (std::size_t k = 0; k < sample_count; ++k) {
    const double time = QuadraticFit::place(chosen.first, chosen.last, k);
    const double outside = std::max({times.scene_start - time, time - times.scene_end, 0.0});
    const double inward = std::max(1 - outside / margin, 0.0);
    chosen.weights[k] = inward * inward;
  }
  return chosen;
}

struct AxisTerms {
  Quadratic position;
  Quadratic velocity;
};

AxisTerms fit_axis(const HermiteOrbit& orbit, const Window& sampled, const QuadraticFit& fit) {
  Samples positions;
  Samples velocities;
  for (std::size_t k = 0; k < sample_count; ++k) {
    const AxisState state = orbit.at(QuadraticFit::place(sampled.first, sampled.last, k));
    positions[k] = state.position;
    velocities[k] = state.velocity;
  }
  return {fit.terms(positions), fit.terms(velocities)};
}

bool all_finite(std::span<const double> values) {
  return std::ranges::all_of(values, [](double value) { return std::isfinite(value); });
}

// The terms of x, y and z; nothing where they or the times exceed a double's range.
std::optional<std::array<AxisTerms, 3>> fit_orbit(const RadarGenericModel& model) {
  const Timeline times = timeline_of(model);
  if (!all_finite(std::array{times.scene_start, times.scene_end, times.last_vector})) return {};
  const Window sampled = choose_window(times, model.time_interval);
  const QuadraticFit fit(sampled.first - times.scene_middle, sampled.last - times.scene_middle,
                         sampled.weights);
  const auto count = static_cast<std::size_t>(model.num_pos_pts);
  const auto terms_of = [&](const RadarArray& positions, const RadarArray& velocities) {
    const HermiteOrbit orbit({positions.elements, count}, {velocities.elements, count},
                             model.time_interval);
    return fit_axis(orbit, sampled, fit);
  };
  const std::array axes = {terms_of(model.rsx, model.vsx), terms_of(model.rsy, model.vsy),
                           terms_of(model.rsz, model.vsz)};
  for (const AxisTerms& axis : axes) {
    if (!all_finite(axis.position) || !all_finite(axis.velocity)) return {};
  }
  return axes;
}

}  // namespace

void rmdl_modelEphemeris(RadarGenericModel* model, gke_Report** err) {
  if (model == nullptr) {
    gridkit::fail(err, "rmdl_modelEphemeris", {"no model was given"});
    return;
  }
  if (!is_usable(*model, err)) return;
  const std::optional<std::array<AxisTerms, 3>> axes = fit_orbit(*model);
  if (!axes) {
    gridkit::fail(err, "rmdl_modelEphemeris",
                  {"the orbit's terms are beyond the range of a double"});
    return;
  }
  double* position = model->rs_coeffs;
  double* velocity = model->vs_coeffs;
  for (const AxisTerms& axis : *axes) {
    position = std::ranges::copy(axis.position, position).out;
    velocity = std::ranges::copy(axis.velocity, velocity).out;
  }
}
