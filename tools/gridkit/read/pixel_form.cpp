#include "tools/gridkit/read/pixel_form.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "tools/gridkit/terminal/interruption.h"

namespace {

class OwnValues final : public PixelForm {
 public:
  explicit OwnValues(bool is_phase) : is_phase_(is_phase) {}

  gridkit::SampleType type() const override {
    return is_phase_ ? gridkit::SampleType::s16 : gridkit::SampleType::u16;
  }

  std::span<const std::byte> operator()(std::span<const std::uint16_t> pixels, bool) override {
    return std::as_bytes(pixels);
  }

  std::optional<double> no_data(bool is_mapped, bool has_gaps) const override {
    return is_mapped || has_gaps ? std::optional(0.0) : std::nullopt;
  }

 private:
  bool is_phase_;
};

class Stretched final : public PixelForm {
 public:
  // `mean` of magnitudes; nothing for phases.
  explicit Stretched(std::optional<double> mean)
      : is_phase_(!mean), gain_(mean && *mean > 0 ? 255 / (3 * *mean) : 0) {}

  gridkit::SampleType type() const override { return gridkit::SampleType::u8; }

  std::span<const std::byte> operator()(std::span<const std::uint16_t> pixels, bool) override {
    bytes_.resize(pixels.size());
    std::transform(pixels.begin(), pixels.end(), bytes_.begin(), [&](std::uint16_t pixel) {
      if (is_phase_) return static_cast<std::byte>((pixel ^ 0x8000U) >> 8U);
      return static_cast<std::byte>(std::min(255.0, pixel * gain_));
    });
    return bytes_;
  }

  std::optional<double> no_data(bool, bool) const override { return std::nullopt; }

 private:
  bool is_phase_;
  double gain_;
  std::vector<std::byte> bytes_;
};

class Calibrated final : public PixelForm {
 public:
  Calibrated(const Calibration& calibration, const gridkit::Window& window, bool is_mapped)
      : weighing_(calibration.radiometry(), window.column),
        in_decibels_(calibration.in_decibels()),
        is_mapped_(is_mapped),
        width_(static_cast<std::size_t>(window.width)),
        next_line_(window.line) {}

  gridkit::SampleType type() const override { return gridkit::SampleType::f32; }

  std::span<const std::byte> operator()(std::span<const std::uint16_t> pixels,
                                        bool complete) override {
    samples_.resize(pixels.size());
    const std::span<float> samples(samples_);
    for (std::size_t at = 0; at < pixels.size(); at += width_, ++next_line_) {
      weighing_.weigh(next_line_, 0, pixels.subspan(at, width_), in_decibels_,
                      samples.subspan(at, width_));
    }
    if (is_mapped_ || !complete) {
      for (std::size_t k = 0; k < pixels.size(); ++k) {
        if (pixels[k] == 0) samples_[k] = not_a_number;
      }
    }
    if (in_decibels_) std::replace(samples_.begin(), samples_.end(), -infinity, not_a_number);
    return std::as_bytes(std::span<const float>(samples_));
  }

  std::optional<double> no_data(bool, bool) const override { return not_a_number; }

 private:
  static constexpr float not_a_number = std::numeric_limits<float>::quiet_NaN();
  static constexpr float infinity = std::numeric_limits<float>::infinity();

  gridkit::RadiometricLines weighing_;
  bool in_decibels_;
  bool is_mapped_;
  std::size_t width_;
  std::int64_t next_line_;
  std::vector<float> samples_;
};

}  // namespace

std::unique_ptr<PixelForm> own_values(bool is_phase) {
  return std::make_unique<OwnValues>(is_phase);
}

std::unique_ptr<PixelForm> stretched(const gridkit::Product& product, const std::string& layer,
                                     const gridkit::Window& window, bool is_phase) {
  if (is_phase) return std::make_unique<Stretched>(std::nullopt);
  double sum = 0;
  gridkit::read_window(product, layer, window,
                       [&](std::span<const std::uint16_t> pixels, std::int32_t) {
                         stop_if_interrupted();
                         for (const std::uint16_t pixel : pixels) sum += pixel;
                       });
  return std::make_unique<Stretched>(sum / window.width / window.height);
}

std::unique_ptr<PixelForm> calibrated(const Calibration& calibration, const gridkit::Window& window,
                                      bool is_mapped) {
  return std::make_unique<Calibrated>(calibration, window, is_mapped);
}
