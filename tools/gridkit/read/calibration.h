#pragma once

#include <cstdint>
#include <string>

#include "gridkit/product.h"

// From a layer's digital numbers to radar brightness (beta nought), the power that the radar
// received back per area in the slant-range plane, as a ratio: beta0 = calFactor * DN^2, or 10
// log10 of it.
class Calibration {
 public:
  Calibration(double factor, bool in_decibels) : factor_(factor), in_decibels_(in_decibels) {}

  double factor() const { return factor_; }
  bool in_decibels() const { return in_decibels_; }

  // Of a digital number; minus infinity in decibels for 0.
  double value(std::uint16_t number) const;

  // "beta0 = calFactor * DN^2"
  std::string formula() const;
  std::string band_name() const { return "beta0"; }
  std::string unit() const { return in_decibels_ ? "dB" : "1"; }

 private:
  double factor_;
  bool in_decibels_;
};

// Whether the layer holds magnitudes, which can be calibrated, and no phases.
bool has_brightness(const gridkit::Layer& layer);

// The calibration of a layer, by the factor that the product publishes. That one is of the
// annotation's first image: where the annotation states another for the layer's own polarisation,
// its own is taken. Throws gridkit::Error for a layer of phases, a product that publishes no
// factor, a factor that is not positive, and a polarisation whose beams have factors of their own.
Calibration calibration_of(const gridkit::Product& product, const gridkit::Layer& layer,
                           bool in_decibels);
