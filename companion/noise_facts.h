#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "companion/utc_seconds.h"
#include "gridkit/companion.h"
#include "lmx/datetime.h"

namespace companion {

// What an annotation says of the noise of an image, or why it says nothing of use.
struct NoiseFacts {
  std::vector<gkc_NoisePolynomial> polynomials;  // by rising azimuth time
  std::vector<double> coefficients;
  double earliest_line = 0;  // azimuth times of the scene's outermost lines
  double latest_line = 0;
  std::string fault;    // in words, after the element; empty where there are polynomials
  std::string element;  // that the fault is about
};

inline constexpr std::uint32_t highest_exponent = 255;

// The coefficients of a polynomial by their exponents, which count from 0 where they are not
// stated. Empty where an exponent is too high.
template <class Polynomial>
std::vector<double> coefficients_of(const Polynomial& polynomial) {
  std::vector<double> result;
  for (std::size_t i = 0; i < polynomial.size_coefficient(); ++i) {
    const auto& coefficient = polynomial.get_coefficient(i);
    const std::size_t exponent =
        coefficient.isset_exponent() ? std::size_t{coefficient.get_exponent()} : i;
    if (exponent > highest_exponent) return {};
    result.resize(std::max(result.size(), exponent + 1));
    result[exponent] += coefficient.get_coefficient();
  }
  return result;
}

template <class Noise>
NoiseFacts noise_of_table(const Noise& noise, const lmx::c_datetime& scene_start,
                          const lmx::c_datetime& scene_stop) {
  NoiseFacts facts;
  facts.earliest_line = seconds_since_midnight(scene_start, scene_start);
  facts.latest_line = seconds_since_midnight(scene_stop, scene_start);
  const auto fail = [&](const char* element, const std::string& fault) {
    NoiseFacts failed;
    failed.element = std::string("/level1Product/noise") + element;
    failed.fault = fault;
    return failed;
  };
  if (noise.get_noiseLevelRef() != "BETA NOUGHT") {
    return fail("/noiseLevelRef", "\"" + std::string(noise.get_noiseLevelRef()) +
                                      "\" is no scale that is known; BETA NOUGHT is");
  }
  for (std::size_t i = 0; i < noise.size_imageNoise(); ++i) {
    const auto& record = noise.get_imageNoise(i);
    const double time = seconds_since_midnight(record.get_timeUTC(), scene_start);
    for (std::size_t k = 0; k < record.size_noiseEstimate(); ++k) {
      const auto& estimate = record.get_noiseEstimate(k);
      const std::vector<double> terms = coefficients_of(estimate);
      if (terms.empty()) {
        return fail("/imageNoise/noiseEstimate",
                    "a polynomial has no coefficients, or an exponent above 255");
      }
      facts.polynomials.push_back({time, estimate.get_validityRangeMin(),
                                   estimate.get_validityRangeMax(), estimate.get_referencePoint(),
                                   static_cast<std::int32_t>(facts.coefficients.size()),
                                   static_cast<std::int32_t>(terms.size())});
      facts.coefficients.insert(facts.coefficients.end(), terms.begin(), terms.end());
    }
  }
  if (facts.polynomials.empty()) return fail("/imageNoise", "there is none");
  std::stable_sort(facts.polynomials.begin(), facts.polynomials.end(),
                   [](const auto& a, const auto& b) { return a.azimuth_time < b.azimuth_time; });
  return facts;
}

// The noise of a polarisation and beam. Where the annotation has several tables of them, of several
// beams or channels, samples do not tell theirs.
template <class Product>
NoiseFacts noise_facts(const Product& product, const std::string& polarisation,
                       const std::optional<std::string>& beam, const lmx::c_datetime& scene_start,
                       const lmx::c_datetime& scene_stop) {
  std::vector<std::size_t> found;
  for (std::size_t i = 0; i < product.size_noise(); ++i) {
    const auto& noise = product.get_noise(i);
    if (noise.get_polLayer() != polarisation) continue;
    if (beam && noise.isset_beamID() && noise.get_beamID() != *beam) continue;
    found.push_back(i);
  }
  if (found.size() == 1)
    return noise_of_table(product.get_noise(found.front()), scene_start, scene_stop);
  NoiseFacts none;
  none.element = "/level1Product/noise";
  none.fault = found.empty() ? "there is none of " + polarisation
                             : "there are " + std::to_string(found.size()) + " of " + polarisation +
                                   ", and samples do not tell which is theirs";
  return none;
}

}  // namespace companion
