#include "tools/gridkit/read/calibration.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <variant>

#include "gridkit/error.h"
#include "gridkit/record_decoder.h"
#include "tools/gridkit/product/product_summary.h"

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

// The layers of an image follow each other, as many for each image.
double factor_of_layer(const gridkit::Product& product, const std::string& layer) {
  const double published = published_factor(product);
  const auto images = calibrations_of(product.path());
  const auto layers = product.layer_names();
  const auto position = std::find(layers.begin(), layers.end(), layer) - layers.begin();
  if (images.empty() || layers.size() % images.size() != 0) return published;
  const std::size_t layers_an_image = layers.size() / images.size();
  const std::size_t image = static_cast<std::size_t>(position) / layers_an_image;
  if (image >= images.size() || images[image].factors.empty()) return published;
  const auto& own = images[image].factors;
  if (own.size() == 1) return own.front();
  throw gridkit::Error(product.path() + ": the beams of " + images[image].polarisation +
                       " have calibration factors of their own, and pixels do not tell their beam");
}

}  // namespace

double Calibration::value(std::uint16_t number) const {
  const double brightness = factor_ * number * number;
  return in_decibels_ ? 10 * std::log10(brightness) : brightness;
}

std::string Calibration::formula() const {
  return in_decibels_ ? "beta0 = 10 * log10(calFactor * DN^2)" : "beta0 = calFactor * DN^2";
}

Calibration calibration_of(const gridkit::Product& product, const gridkit::Layer& layer,
                           bool in_decibels) {
  if (layer.pixel_type() != "u16") {
    throw gridkit::Error(layer.name() +
                         ": holds phases, which have no brightness; calibrate a magnitude layer");
  }
  const double factor = factor_of_layer(product, layer.name());
  if (!(factor > 0) || !std::isfinite(factor)) {
    throw gridkit::Error(product.path() + ": the calibration factor is not a positive number");
  }
  return {factor, in_decibels};
}
