#include "tools/gridkit/read/calibration.h"

#include <algorithm>
#include <cmath>
#include <variant>
#include <vector>

#include "gridkit/error.h"
#include "gridkit/record_decoder.h"
#include "tools/gridkit/product/layer_image.h"
#include "tools/gridkit/product/product_facts.h"

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
  const auto facts = read_facts(product.path());
  const auto images = facts ? facts->calibration : std::vector<ImageCalibration>();
  const auto image = image_of_layer(product, layer, images.size());
  if (!image || images[*image].factors.empty()) return published;
  const auto& own = images[*image].factors;
  if (own.size() == 1) return own.front();
  throw gridkit::Error(product.path() + ": the beams of " + images[*image].polarisation +
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

bool has_brightness(const gridkit::Layer& layer) {
  return layer.pixel_type() == "u16";
}

Calibration calibration_of(const gridkit::Product& product, const gridkit::Layer& layer,
                           bool in_decibels) {
  if (!has_brightness(layer)) {
    throw gridkit::Error(layer.name() +
                         ": holds phases, which have no brightness; calibrate a magnitude layer");
  }
  const double factor = factor_of_layer(product, layer.name());
  if (!(factor > 0) || !std::isfinite(factor)) {
    throw gridkit::Error(product.path() + ": the calibration factor is not a positive number");
  }
  return {factor, in_decibels};
}
