#include "tools/gridkit/product/product_summary.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <span>
#include <string_view>
#include <utility>

#include "tools/gridkit/product/words.h"

namespace {

// A code and what it says.
using Meaning = std::pair<std::string_view, std::string_view>;

constexpr std::array<Meaning, 4> variants = {{{"SSC", "single-look slant-range complex"},
                                              {"MGD", "multi-look ground-range detected"},
                                              {"GEC", "geocoded on the ellipsoid"},
                                              {"EEC", "geocoded with a terrain model"}}};
constexpr std::array<Meaning, 2> resolutions = {
    {{"SE", "spatially enhanced"}, {"RE", "radiometrically enhanced"}}};

// "StripMap (SM)", or the code alone where it says nothing more.
std::string explained(const std::string& code, std::span<const Meaning> meanings) {
  const auto found = std::find_if(meanings.begin(), meanings.end(),
                                  [&](const Meaning& meaning) { return meaning.first == code; });
  return found == meanings.end() ? code : std::string(found->second) + " (" + code + ')';
}

std::string lower(std::string text) {
  for (char& c : text) c = static_cast<char>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c);
  return text;
}

std::string variant_row(const gridkit::ProductFacts& facts) {
  const std::string text = explained(facts.variant, variants);
  return facts.resolution_variant.empty()
             ? text
             : text + ", " + explained(facts.resolution_variant, resolutions);
}

std::string polarisation_row(const gridkit::ProductFacts& facts) {
  return joined(facts.polarisations.size(), [&](std::size_t i) { return facts.polarisations[i]; }) +
         " (" + lower(facts.polarisation_mode) + ')';
}

// From start to stop, the date once where they share it.
std::string interval(const gridkit::ProductFacts& facts) {
  const std::string start = time_in_words(facts.start);
  const std::string stop = time_in_words(facts.stop);
  const std::size_t date = start.find(' ');
  const bool same_day = date != std::string::npos && stop.compare(0, date, start, 0, date) == 0;
  return start + " to " + (same_day ? stop.substr(date + 1) : stop) + " UTC";
}

std::string place_in_words(const gridkit::ProductFacts::Place& at) {
  return number_in_words(std::abs(at.latitude), 4) + (at.latitude < 0 ? "S " : "N ") +
         number_in_words(std::abs(at.longitude), 4) + (at.longitude < 0 ? 'W' : 'E');
}

std::string centre_row(const gridkit::ProductFacts& facts) {
  return place_in_words(facts.centre) + ", " + number_in_words(facts.average_height_metres, 0) +
         " m above the ellipsoid, incidence " + number_in_words(facts.incidence_degrees, 2) +
         " degrees";
}

std::string extent_row(const gridkit::ProductFacts& facts) {
  const auto kilometres = [](double metres) { return number_in_words(metres / 1000, 1) + " km "; };
  return "about " + kilometres(facts.extent->lines_metres) +
         (facts.is_on_map ? "north" : "azimuth") + ", " + kilometres(facts.extent->samples_metres) +
         (facts.is_on_map ? "east" : "ground range");
}

std::string spacing_row(const gridkit::ProductFacts& facts) {
  const gridkit::ProductFacts::Raster& raster = *facts.raster;
  const std::string line = number_in_words(raster.line_spacing_metres, 3) + " m ";
  const std::string sample = number_in_words(raster.sample_spacing_metres, 3) + " m ";
  if (facts.is_on_map) return line + "north, " + sample + "east";
  if (!raster.ground_spacing_metres) return line + "azimuth, " + sample + "ground range";
  const auto& [near, far] = *raster.ground_spacing_metres;
  return line + "azimuth, " + sample + "slant range (" + number_in_words(near, 3) + " to " +
         number_in_words(far, 3) + " m on the ground)";
}

}  // namespace

std::string calibration_in_words(const gridkit::ImageCalibration& image) {
  if (image.factors.empty()) return image.polarisation + " not stated";
  std::string text;
  for (const double factor : image.factors) {
    text += (text.empty() ? "" : " or ") + shortest_number(factor);
  }
  return image.polarisation + ' ' + text + (image.factors.size() > 1 ? " by beam" : "");
}

std::vector<SummaryRow> summary_of(const gridkit::ProductFacts& facts) {
  std::vector<SummaryRow> rows = {
      {"product", variant_row(facts)},
      {"mode", imaging_mode_in_words(facts.imaging_mode) + ", beam " + facts.beam + ", looking " +
                   lower(facts.look)},
      {"polarisation", polarisation_row(facts)},
      {"satellite",
       facts.mission + ", orbit " + std::to_string(facts.orbit) + ", " + lower(facts.pass)},
      {"time", interval(facts)},
      {"centre", centre_row(facts)}};
  if (facts.extent) rows.push_back({"extent", extent_row(facts)});
  if (facts.raster) {
    const gridkit::ProductFacts::Raster& raster = *facts.raster;
    rows.push_back({"size", std::to_string(raster.lines) + " lines x " +
                                std::to_string(raster.samples) + " samples"});
    rows.push_back({"spacing", spacing_row(facts)});
    rows.push_back({"resolution", number_in_words(raster.azimuth_resolution_metres, 2) +
                                      " m azimuth, " +
                                      number_in_words(raster.ground_range_resolution_metres, 2) +
                                      " m ground range"});
  }
  if (!facts.calibration.empty()) {
    rows.push_back({"calibration", joined(facts.calibration.size(), [&](std::size_t i) {
                      return calibration_in_words(facts.calibration[i]);
                    })});
  }
  return rows;
}
