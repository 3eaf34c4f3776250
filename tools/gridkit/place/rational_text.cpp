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

std::string remark_on(const rmdllib::FittedRationalModel& fitted) {
  if (fitted.largest_line_error <= goal && fitted.largest_sample_error <= goal) return {};
  char text[200];
  std::snprintf(
      text, sizeof text,
      "the rational model is off by up to %.3g lines and %.3g samples, more than %.2f pixel",
      fitted.largest_line_error, fitted.largest_sample_error, goal);
  return text;
}
