#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "gridkit/image_radiometry.h"
#include "gridkit/product.h"
#include "gridkit/samples.h"

// What digital numbers become: backscatter as a ratio of powers, or in decibels; see
// gridkit/radiometry.h for its formulas.
struct CalibrationRequest {
  gridkit::RadiometryRequest radiometry;
  bool in_decibels = false;
};

// The names by which users ask: "beta0", "beta0-db", "sigma0" and so on; and what one of them
// means.
const std::vector<std::string>& calibration_names();
CalibrationRequest calibration_named(const std::string& name, bool subtract_noise);

// The calibration of an image or a layer, and what files tell of it.
class Calibration {
 public:
  Calibration(std::shared_ptr<const gridkit::Radiometry> radiometry, bool in_decibels)
      : radiometry_(std::move(radiometry)), in_decibels_(in_decibels) {}

  const std::shared_ptr<const gridkit::Radiometry>& radiometry() const { return radiometry_; }
  bool in_decibels() const { return in_decibels_; }

  std::string band_name() const { return name_of(radiometry_->quantity()); }  // "sigma0"
  std::string unit() const { return in_decibels_ ? "dB" : "1"; }

  // Formula, factor, unit, noise and angles: keys and values, as docs/formats.md lists them.
  std::vector<std::pair<std::string, std::string>> metadata() const;

 private:
  std::shared_ptr<const gridkit::Radiometry> radiometry_;
  bool in_decibels_;
};

// Whether the layer holds magnitudes, which can be calibrated, and no phases.
bool has_brightness(const gridkit::Layer& layer);

// The calibration of a layer, by the factor that the product publishes. That one is of the
// annotation's first image: where the annotation states another for the layer's own polarisation,
// its own is taken. Throws gridkit::Error for a layer of phases, a product that publishes no
// factor, a factor that is not positive, a polarisation whose beams have factors of their own, and
// as gridkit::radiometry_of does.
Calibration calibration_of(const gridkit::Product& product, const gridkit::Layer& layer,
                           const CalibrationRequest& request);

// The calibration of an image's samples, by its own factor. Throws gridkit::Error where there is no
// one factor, and as gridkit::radiometry_of does.
Calibration calibration_of(const gridkit::Product& product, const gridkit::Samples& samples,
                           std::size_t image, const CalibrationRequest& request);

// Whether a calibration takes angles from the product's geolocation grid, so that warn_about_grid
// tells of one that is at fault.
bool tells_of_grid(const CalibrationRequest& request);

// Tells on standard error where angles are asked for and the product's geolocation grid was not
// taken.
void warn_about_grid(const gridkit::Product& product, const CalibrationRequest& request);
