#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "gridkit/product_facts.h"
#include "rmdllib/vector3.h"
#include "tools/gridkit/report/svg_plot.h"

namespace report {

// A state vector of the annotation: seconds from the scene's start, Earth-fixed metres and m/s.
struct OrbitState {
  double time = 0;
  rmdllib::Vector3 position;
  rmdllib::Vector3 velocity;
};

// What a report tells of an acquisition, read from the annotation's classes.
struct Acquisition {
  std::string title;                                       // the product's name
  std::string subtitle;                                    // variant, mode and time in a few words
  std::vector<std::pair<std::string, std::string>> facts;  // name and text
  double duration = 0;                                     // of the scene, seconds
  std::vector<OrbitState> orbit;

  // Curves of every layer (and beam): over the azimuth time from the scene's start in seconds, at
  // the middle of the range; and over two-way range time in milliseconds, of the first, middle and
  // last record, or of the middle one alone where there are more than two layers.
  std::vector<Series> doppler_over_time;  // Hz
  std::vector<Series> doppler_over_range;
  std::vector<Series> noise_over_time;  // noise equivalent radar brightness, dB
  std::vector<Series> noise_over_range;
};

// Reads a valid annotation of the schema "3.4", "3.5" or "4.0".
Acquisition read_acquisition(const std::string& path, const std::string& schema,
                             const std::optional<gridkit::ProductFacts>& known);

// A polynomial of the annotation.
struct Polynomial {
  double from = 0;
  double to = 0;
  double reference = 0;
  std::vector<std::pair<std::uint32_t, double>> terms;  // exponent and coefficient

  // Sum of coefficient * (at - reference)^exponent.
  double value(double at) const;
};

}  // namespace report
