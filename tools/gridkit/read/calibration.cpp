#include "tools/gridkit/read/calibration.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <variant>
#include <vector>

#include "gridkit/error.h"
#include "gridkit/geolocation_grid.h"
#include "gridkit/product_facts.h"
#include "gridkit/record_decoder.h"
#include "tools/gridkit/product/layer_image.h"
#include "tools/gridkit/terminal/terminal.h"

namespace {

constexpr const char* data_name = ":TSX_Beta0";
constexpr const char* field_name = "calibration_factor";

double published_factor(const gridkit::Product& product) {
  const auto names = product.data_names();
  if (std::find(names.begin(), names.end(), data_name) != names.end()) {
    if (const auto data = product.read_data(data_name)) {
      for (const auto& field : gridkit::decode_record(data->dictionary, data->type, data->bytes)) {
        const double* value = std::get_if<double>(&field.value);
        if (field.name == field_name && value != nullptr) return *value;
      }
    }
  }
  throw gridkit::Error(product.path() + ": publishes no calibration factor (" + data_name + ")");
}

double factor_of_layer(const gridkit::Product& product, const std::string& layer) {
  const double published = published_factor(product);
  const auto facts = gridkit::facts_of(product);
  const auto images = facts ? facts->calibration : std::vector<gridkit::ImageCalibration>();
  const auto image = image_of_layer(product, layer, images.size());
  if (!image || images[*image].factors.empty()) return published;
  const auto& own = images[*image].factors;
  if (own.size() == 1) return own.front();
  throw gridkit::Error(product.path() + ": the beams of " + images[*image].polarisation +
                       " have calibration factors of their own, and pixels do not tell their beam");
}

std::string exact(double value) {
  std::array<char, 32> text{};
  std::snprintf(text.data(), text.size(), "%.17g", value);
  return text.data();
}

}  // namespace

const std::vector<std::string>& calibration_names() {
  static const std::vector<std::string> names = {"beta0",     "beta0-db", "sigma0",
                                                 "sigma0-db", "gamma0",   "gamma0-db"};
  return names;
}

CalibrationRequest calibration_named(const std::string& name, bool subtract_noise) {
  using gridkit::Backscatter;
  const Backscatter quantity = name.starts_with("sigma0")   ? Backscatter::sigma0
                               : name.starts_with("gamma0") ? Backscatter::gamma0
                                                            : Backscatter::beta0;
  return {{quantity, subtract_noise}, name.ends_with("-db")};
}

std::vector<std::pair<std::string, std::string>> Calibration::metadata() const {
  std::vector<std::pair<std::string, std::string>> told = {
      {"CALIBRATION", radiometry_->formula(in_decibels_)},
      {"CALIBRATION_FACTOR", exact(radiometry_->factor())},
      {"CALIBRATION_UNIT", in_decibels_ ? "dB" : "1 (a ratio of powers)"},
      {"CALIBRATION_NOISE", radiometry_->noise_in_words()}};
  const std::string angles = radiometry_->incidence_in_words();
  if (!angles.empty()) told.emplace_back("CALIBRATION_INCIDENCE", angles);
  return told;
}

bool has_brightness(const gridkit::Layer& layer) {
  return layer.pixel_type() == "u16";
}

Calibration calibration_of(const gridkit::Product& product, const gridkit::Layer& layer,
                           const CalibrationRequest& request) {
  if (!has_brightness(layer)) {
    throw gridkit::Error(layer.name() +
                         ": holds phases, which have no brightness; calibrate a magnitude layer");
  }
  const double factor = factor_of_layer(product, layer.name());
  if (!(factor > 0) || !std::isfinite(factor)) {
    throw gridkit::Error(product.path() + ": the calibration factor is not a positive number");
  }
  return {gridkit::radiometry_of(product, layer, factor, request.radiometry), request.in_decibels};
}

Calibration calibration_of(const gridkit::Product& product, const gridkit::Samples& samples,
                           std::size_t number, const CalibrationRequest& request) {
  const gridkit::SampleImage& image = samples.images().at(number);
  if (!(image.calibration_factor > 0) || !std::isfinite(image.calibration_factor)) {
    throw gridkit::Error("the product has no one calibration factor for " + image.name);
  }
  return {gridkit::radiometry_of(product, samples, number, request.radiometry),
          request.in_decibels};
}

bool tells_of_grid(const CalibrationRequest& request) {
  return request.radiometry.quantity != gridkit::Backscatter::beta0;
}

void warn_about_grid(const gridkit::Product& product, const CalibrationRequest& request) {
  if (!tells_of_grid(request)) return;
  const std::string warning =
      gridkit::find_geolocation_grid(product.plugin(), product.path()).warning;
  if (!warning.empty()) warn(warning);
}
