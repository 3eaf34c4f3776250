#include "tools/gridkit/place/rational_text.h"

#include <cstdio>
#include <iostream>

namespace {

using json = nlohmann::ordered_json;

constexpr double goal = 0.01;  // pixel

}  // namespace

json rational_model_as_json(const rmdllib::FittedRationalModel& fitted, bool delays) {
  const rmdllib::RationalModel& model = fitted.model;
  return {{"LINE_OFF", model.line.offset},
          {"SAMP_OFF", model.sample.offset},
          {"LAT_OFF", model.latitude.offset},
          {"LONG_OFF", model.longitude.offset},
          {"HEIGHT_OFF", model.height.offset},
          {"LINE_SCALE", model.line.scale},
          {"SAMP_SCALE", model.sample.scale},
          {"LAT_SCALE", model.latitude.scale},
          {"LONG_SCALE", model.longitude.scale},
          {"HEIGHT_SCALE", model.height.scale},
          {"LINE_NUM_COEFF", model.line_function.numerator},
          {"LINE_DEN_COEFF", model.line_function.denominator},
          {"SAMP_NUM_COEFF", model.sample_function.numerator},
          {"SAMP_DEN_COEFF", model.sample_function.denominator},
          {"ERR_LINE", fitted.largest_line_error},
          {"ERR_SAMP", fitted.largest_sample_error},
          {"MIN_HEIGHT", fitted.heights.lowest},
          {"MAX_HEIGHT", fitted.heights.highest},
          {"delays", delays}};
}

void print_rational_model(const rmdllib::FittedRationalModel& fitted, bool delays) {
  const json document = rational_model_as_json(fitted, delays);
  for (const auto& [name, value] : document.items()) {
    if (!value.is_array()) {
      std::cout << name << ": " << value << '\n';
      continue;
    }
    for (std::size_t i = 0; i < value.size(); ++i) {
      std::cout << name << '_' << i + 1 << ": " << value[i] << '\n';
    }
  }
}

std::string remark_on(const rmdllib::FittedRationalModel& fitted) {
  if (fitted.largest_line_error <= goal && fitted.largest_sample_error <= goal) return {};
  char text[200];
  std::snprintf(
      text, sizeof text,
      "the rational model is off by up to %.3g lines and %.3g samples, more than %.2f pixel",
      fitted.largest_line_error, fitted.largest_sample_error, goal);
  return text;
}
