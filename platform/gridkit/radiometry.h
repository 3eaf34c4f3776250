#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "gridkit/export.h"

// From powers of samples to backscatter: what an image's numbers mean per area. It knows of no
// format: factor, noise and angles are handed in.
//
//   beta0  =  k DN^2 - noise                per area in the slant-range plane
//   sigma0 = (k DN^2 - noise) sin(theta)    per area on the ground
//   gamma0 = (k DN^2 - noise) tan(theta)    per area across the line of sight
//
// All are ratios of powers. k is the product's calibration factor, DN^2 the power of a sample (I^2
// + Q^2, or the square of a detected amplitude), theta the angle of incidence, between the line of
// sight and the ellipsoid's vertical. `noise` is the power that the instrument itself adds, on the
// scale of beta0; without its subtraction it is 0. Differences below 0 are kept: they are what
// noise leaves of dark places, and a mean over them is unbiased; in decibels they are
// not-a-numbers. Convention: R. K. Raney et al., A plea for radar brightness, IGARSS 1994.

namespace gridkit {

enum class Backscatter { beta0, sigma0, gamma0 };

// "beta0", "sigma0" or "gamma0".
GRIDKIT_API const char* name_of(Backscatter quantity);

// "sigma0 = (calFactor * DN^2 - noise) * sin(incidence)" and the like, for metadata.
GRIDKIT_API std::string formula_of(Backscatter quantity, bool with_noise, bool in_decibels);

// Angles of incidence over an image. Operations may be called on any number of threads at once.
class GRIDKIT_API Incidence {
 public:
  virtual ~Incidence();

  // At a place of the image, in radians, above 0 and below pi/2. Whole numbers are the centres of
  // pixels; line 0 and sample 0 are the first. Throws Error where there is none.
  virtual double at(double line, double sample) const = 0;

  // Places between which the angle is smooth along each axis, rising; may be empty.
  virtual std::vector<double> line_knots() const { return {}; }
  virtual std::vector<double> sample_knots() const { return {}; }

  // Where the angles come from, in words for metadata.
  virtual std::string source() const = 0;
};

// A polynomial of noise in two-way range time, in seconds: the sum of coefficients[i] * (time -
// reference_time)^i. It holds between range_time_min and range_time_max.
struct GRIDKIT_API NoisePolynomial {
  double range_time_min = 0;
  double range_time_max = 0;
  double reference_time = 0;
  std::vector<double> coefficients;

  // Beyond its range the value at the nearer end: a polynomial that was fitted inside means
  // nothing outside.
  double at(double range_time) const;
};

// The noise at one azimuth time, by one polynomial or several that hold in ranges of their own.
struct GRIDKIT_API NoiseRecord {
  double azimuth_time = 0;  // s since the midnight, UTC, that begins the day of the scene's start
  std::vector<NoisePolynomial> polynomials;  // at least one

  // By the polynomial that holds at the range time, or the one that is nearest to do so.
  double at(double range_time) const;
};

// Noise of an image: factor * record's value is on the scale of beta0.
struct ImageNoise {
  double factor = 0;                 // of the image's own polarisation
  std::vector<NoiseRecord> records;  // by rising azimuth time
  double earliest_line = 0;          // azimuth times of the scene's outermost lines
  double latest_line = 0;
};

// When the lines and samples of an image were seen, as its raster counts them.
struct RasterTimes {
  double first_line = 0;     // s since midnight, as NoiseRecord::azimuth_time
  double line_interval = 0;  // s; negative where lines run backwards
  std::function<double(double sample)> range_time;  // s, two-way
};

// The most noise values (records x samples) that are kept: 64 MiB.
inline constexpr std::int64_t most_noise_values = std::int64_t{1} << 23;

// The backscatter of an image. Immutable, so threads share it.
//
// Sines and tangents are interpolated, bilinearly between nodes that are laid so close that halfway
// between them the interpolated value differs from the exact one by `gain_precision` of it at most.
// Noise is evaluated exactly for each sample, once per record, and between two records it changes
// linearly with azimuth time; before the first and after the last it stays as it is there.
class GRIDKIT_API Radiometry {
 public:
  static constexpr double gain_precision = 1e-7;

  struct Parts {
    Backscatter quantity = Backscatter::beta0;
    double factor = 0;  // above 0
    std::int64_t lines = 0;
    std::int64_t samples = 0;
    std::shared_ptr<const Incidence> incidence;  // may be null for beta0
    std::optional<ImageNoise> noise;             // to subtract; with its times
    RasterTimes times;
  };

  // Throws Error for parts that do not serve: no factor, no angles where they are needed, angles
  // that no close mesh interpolates, noise records that are not in order or too many.
  explicit Radiometry(Parts parts);
  Radiometry(Radiometry&&) noexcept;
  ~Radiometry();

  Backscatter quantity() const;
  double factor() const;
  bool subtracts_noise() const;
  std::int64_t lines() const;
  std::int64_t samples() const;

  // For metadata: the formula, where noise comes from or that it stays in, and where the angles
  // come from (empty for beta0).
  std::string formula(bool in_decibels) const;
  std::string noise_in_words() const;
  std::string incidence_in_words() const;

 private:
  friend class RadiometricLines;
  struct Tables;
  std::unique_ptr<const Tables> tables_;
};

// Applies a radiometry to samples of lines, with working memory of its own: for one thread at a
// time.
class GRIDKIT_API RadiometricLines {
 public:
  // Of every `sample_step`th sample from `first_sample` on; they lie in the image.
  explicit RadiometricLines(std::shared_ptr<const Radiometry> radiometry,
                            std::int64_t first_sample = 0, std::int64_t sample_step = 1);
  RadiometricLines(RadiometricLines&&) noexcept;
  ~RadiometricLines();

  // From powers (DN^2) of a line's samples, from the window's number `index` on, to the quantity;
  // `values` has their size and may not overlap them.
  void weigh(std::int64_t line, std::size_t index, std::span<const double> powers,
             std::span<double> values);

  // The same from 16-bit amplitudes to 32-bit numbers, or decibels of them: minus infinity for 0,
  // not-a-number below.
  void weigh(std::int64_t line, std::size_t index, std::span<const std::uint16_t> amplitudes,
             bool in_decibels, std::span<float> values);

 private:
  struct Work;
  std::unique_ptr<Work> work_;
};

}  // namespace gridkit
