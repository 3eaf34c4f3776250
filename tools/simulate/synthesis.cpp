#include "tools/simulate/synthesis.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "tools/simulate/noise.h"
#include "tools/simulate/random.h"

namespace simulate {

namespace {

constexpr double mean_amplitude = 110;     // digital numbers of the background
constexpr double target_amplitude = 9000;  // of a point target's peak
constexpr int response_reach = 12;         // pixels to either side
constexpr int looks = 4;

// A circular complex Gaussian of unit power, by Box and Muller.
Sample gaussian(std::uint64_t key) {
  const double radius = std::sqrt(-std::log(uniform(random_bits(key))));
  const double angle = 2 * std::numbers::pi * uniform(random_bits(~key));
  return {static_cast<float>(radius * std::cos(angle)),
          static_cast<float>(radius * std::sin(angle))};
}

double sinc(double x) {
  const double a = std::numbers::pi * x;
  return std::abs(a) < 1e-9 ? 1 : std::sin(a) / a;
}

}  // namespace

Synthesis::Synthesis(GroundSpacing spacing, std::vector<Pixel> targets, std::uint64_t seed,
                     std::int32_t image, std::shared_ptr<const Shading> shading)
    : targets_(std::move(targets)),
      seed_(random_bits(seed ^ random_bits(static_cast<std::uint64_t>(image) + 1))),
      spacing_(spacing),
      shading_(std::move(shading)) {}

// A patchwork of fields with a river through it, in metres on ground. Hills are wooded evenly, so
// that their slopes show: those towards the satellite are brighter, those away from it darker.
double Synthesis::backscatter(std::int32_t line, std::size_t sample) const {
  const double along = line * spacing_.line_metres;
  const double across = static_cast<double>(sample) * spacing_.sample_metres;
  if (shading_) {
    const double woods = 0.8 + 0.4 * noise(along / 60, across / 60, 7);
    return woods * shading_->at({static_cast<double>(line), static_cast<double>(sample)});
  }
  const double rolling = 0.6 + 0.8 * noise(along / 400, across / 400, 7);
  const double field = 0.5 + noise(std::floor(along / 220), std::floor(across / 160), 11);
  const double bend = 250 * std::sin(along / 900) + 120 * std::sin(along / 310 + 1);
  const double from_river = std::abs(across - 900 - bend);
  const double water = from_river < 45 ? 0.12 : 1;
  return rolling * field * water;
}

void Synthesis::add_targets(std::int32_t line, std::span<Sample> samples) const {
  for (const Pixel& target : targets_) {
    const double dy = line - target.line;
    if (std::abs(dy) > response_reach) continue;
    const auto last = static_cast<std::int32_t>(samples.size()) - 1;
    const auto from = std::max(0, static_cast<std::int32_t>(target.sample) - response_reach);
    const auto to = std::min(last, static_cast<std::int32_t>(target.sample) + response_reach);
    for (std::int32_t s = from; s <= to; ++s) {
      const double response = target_amplitude * sinc(dy) * sinc(s - target.sample);
      auto& sample = samples[static_cast<std::size_t>(s)];
      sample.i += static_cast<float>(response * 0.8);
      sample.q += static_cast<float>(response * 0.6);
    }
  }
}

void Synthesis::complex_line(std::int32_t line, std::span<Sample> samples) const {
  const std::uint64_t row = random_bits(seed_ ^ static_cast<std::uint64_t>(line));
  for (std::size_t s = 0; s < samples.size(); ++s) {
    const double amplitude = mean_amplitude * std::sqrt(backscatter(line, s));
    const Sample speckle = gaussian(row + s);
    samples[s] = {static_cast<float>(amplitude * speckle.i),
                  static_cast<float>(amplitude * speckle.q)};
  }
  add_targets(line, samples);
}

void Synthesis::detected_line(std::int32_t line, std::span<float> amplitudes) const {
  std::vector<Sample> responses(amplitudes.size());
  add_targets(line, responses);
  const std::uint64_t row = random_bits(seed_ ^ static_cast<std::uint64_t>(line));
  for (std::size_t s = 0; s < amplitudes.size(); ++s) {
    const double power = mean_amplitude * mean_amplitude * backscatter(line, s);
    // A look's power is that of a circular Gaussian: minus the logarithm of an even number.
    double product = 1;
    for (std::uint64_t look = 0; look < looks; ++look) {
      product *= uniform(random_bits(row + s * looks + look));
    }
    const double speckle = -std::log(product) / looks;
    const Sample& r = responses[s];
    const double response = static_cast<double>(r.i) * r.i + static_cast<double>(r.q) * r.q;
    amplitudes[s] = static_cast<float>(std::sqrt(power * speckle + response));
  }
}

}  // namespace simulate
