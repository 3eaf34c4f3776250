#include "picture/stretch.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numbers>

namespace {

constexpr double steps_per_octave = 710;  // 2^(1/710) is 1 + 1/1024
constexpr double lowest_octave = -16;     // means of many pixels may lie far below 1
constexpr double highest_octave = 16;     // above every 16-bit pixel
constexpr auto step_count =
    static_cast<std::size_t>((highest_octave - lowest_octave) * steps_per_octave);

std::size_t step_of(float value) {
  const double step = (std::log2(value) - lowest_octave) * steps_per_octave;
  return static_cast<std::size_t>(std::clamp(step, 0.0, step_count - 1.0));
}

double middle_of(std::size_t step) {
  return std::exp2((static_cast<double>(step) + 0.5) / steps_per_octave + lowest_octave);
}

// The value that `percent` of the counted ones do not exceed.
double percentile(std::span<const std::uint64_t> counts, std::uint64_t total, double percent) {
  const double wanted = static_cast<double>(total) * percent / 100;
  std::uint64_t below = 0;
  std::size_t last = 0;
  for (std::size_t step = 0; step < counts.size(); ++step) {
    if (counts[step] == 0) continue;
    last = step;
    below += counts[step];
    if (static_cast<double>(below) >= wanted) break;
  }
  return middle_of(last);
}

std::uint8_t colour(double share) {
  const double step = std::clamp(share * data_colours, 0.0, data_colours - 1.0);
  return static_cast<std::uint8_t>(1 + static_cast<int>(step));
}

}  // namespace

Stretch percentile_stretch(std::span<const float> values, const Percentiles& percentiles) {
  std::vector<std::uint64_t> counts(step_count);
  std::uint64_t total = 0;
  for (const float value : values) {
    if (!(value > 0)) continue;
    ++counts[step_of(value)];
    ++total;
  }
  if (total == 0) return {};
  return {percentile(counts, total, percentiles.low), percentile(counts, total, percentiles.high)};
}

std::vector<std::uint8_t> stretch_values(std::span<const float> values, const Stretch& stretch) {
  const double range = stretch.high - stretch.low;
  std::vector<std::uint8_t> colours(values.size());
  std::transform(values.begin(), values.end(), colours.begin(), [&](float value) {
    if (std::isnan(value)) return std::uint8_t{0};
    return colour(range > 0 ? (value - stretch.low) / range : 0.5);
  });
  return colours;
}

std::vector<std::uint8_t> stretch_phases(std::span<const float> phases) {
  std::vector<std::uint8_t> colours(phases.size());
  std::transform(phases.begin(), phases.end(), colours.begin(), [](float phase) {
    if (std::isnan(phase)) return std::uint8_t{0};
    return colour((phase + std::numbers::pi) / (2 * std::numbers::pi));
  });
  return colours;
}
