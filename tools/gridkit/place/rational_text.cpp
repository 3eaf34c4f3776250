#include "tools/gridkit/place/rational_text.h"

#include <cstdio>
#include <iostream>
#include <string>
#include <utility>

namespace {

using json = nlohmann::ordered_json;

constexpr double goal = 0.01;  // pixel

}  // namespace

json rational_model_as_json(const rmdllib::FittedRationalModel& fitted, bool delays) {
  const rmdllib::RationalModel& model = fitted.model;
  const std::pair<std::string, const rmdllib::Normalisation&> coordinates[] = {
      {"LINE", model.line},
      {"SAMP", model.sample},
      {"LAT", model.latitude},
      {"LONG", model.longitude},
      {"HEIGHT", model.height}};
  const std::pair<std::string, const rmdllib::RationalFunction&> functions[] = {
      {"LINE", model.line_function}, {"SAMP", model.sample_function}};
  json document;
  for (const auto& [name, coordinate] : coordinates) document[name + "_OFF"] = coordinate.offset;
  for (const auto& [name, coordinate] : coordinates) document[name + "_SCALE"] = coordinate.scale;
  for (const auto& [name, function] : functions) {
    document[name + "_NUM_COEFF"] = function.numerator;
    document[name + "_DEN_COEFF"] = function.denominator;
  }
  document["ERR_LINE"] = fitted.largest_line_error;
  document["ERR_SAMP"] = fitted.largest_sample_error;
  document["MIN_HEIGHT"] = fitted.heights.lowest;
  document["MAX_HEIGHT"] = fitted.heights.highest;
  document["delays"] = delays;
  return document;
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

std::vector<std::pair<std::string, std::string>> rational_model_as_metadata(
    const rmdllib::FittedRationalModel& fitted, double first_line, double first_sample) {
  const rmdllib::RationalModel& model = fitted.model;
  const json document = {{"ERR_BIAS", -1},  // metres on the ground, which the fit does not tell
                         {"ERR_RAND", -1},
                         {"LINE_OFF", model.line.offset - first_line},
                         {"SAMP_OFF", model.sample.offset - first_sample},
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
                         {"SAMP_DEN_COEFF", model.sample_function.denominator}};
  std::vector<std::pair<std::string, std::string>> items;
  for (const auto& [name, value] : document.items()) {
    std::string text = value.is_array() ? "" : value.dump();
    if (value.is_array()) {
      for (const json& number : value) text += (text.empty() ? "" : " ") + number.dump();
    }
    items.emplace_back(name, text);
  }
  return items;
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
