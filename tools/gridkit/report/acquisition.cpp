#include "tools/gridkit/report/acquisition.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <optional>
#include <utility>

#include "gridkit/product_facts.h"
#include "lmx/datetime.h"
#include "tools/annotation/annotation_file.h"
#include "tools/gridkit/product/product_summary.h"
#include "tools/gridkit/product/words.h"
#include "tools/gridkit/report/html.h"

namespace report {

namespace {

constexpr std::size_t most_curve_points = 500;
constexpr std::size_t most_layers_in_full = 2;  // by their first, middle and last record
constexpr double milliseconds = 1e3;

// Days from 1970-01-01 in the Gregorian calendar: March is the first month, so that a leap day ends
// its year.
std::int64_t day_number(const lmx::c_datetime& time) {
  const std::int64_t year = std::int64_t{time.year} - (time.month <= 2 ? 1 : 0);
  const std::int64_t month = (time.month + 9) % 12;
  const std::int64_t century = year >= 0 ? year / 100 : (year - 99) / 100;
  const std::int64_t leap_days = (year >= 0 ? year / 4 : (year - 3) / 4) - century +
                                 (century >= 0 ? century / 4 : (century - 3) / 4);
  return 365 * year + leap_days + (153 * month + 2) / 5 + time.day - 719469;
}

double seconds_between(const lmx::c_datetime& from, const lmx::c_datetime& to) {
  const auto whole = [](const lmx::c_datetime& time) {
    const std::int64_t minutes = std::int64_t{time.hour} * 60 + time.minute;
    return static_cast<double>(day_number(time) * 86400 + minutes * 60);
  };
  return whole(to) - whole(from) + (double{to.seconds} - double{from.seconds});
}

// Every `stride`th of many records, so that a curve has a bounded number of points.
std::size_t stride_of(std::size_t records) {
  return std::max<std::size_t>(1, (records + most_curve_points - 1) / most_curve_points);
}

template <class Source>
Polynomial polynomial(const Source& source) {
  Polynomial result{source.get_validityRangeMin(),
                    source.get_validityRangeMax(),
                    source.get_referencePoint(),
                    {}};
  for (std::size_t i = 0; i < source.size_coefficient(); ++i) {
    const auto& term = source.get_coefficient(i);
    const auto exponent =
        term.isset_exponent() ? term.get_exponent() : static_cast<std::uint32_t>(i);
    result.terms.emplace_back(exponent, term.get_coefficient());
  }
  return result;
}

// "HH", or "HH, strip_012" where there is a beam to name.
template <class Layer>
std::string curve_name(const Layer& layer) {
  return layer.isset_beamID() ? layer.get_polLayer() + ", " + layer.get_beamID()
                              : layer.get_polLayer();
}

template <class Shown>
std::vector<PlotPoint> over_range(const Polynomial& polynomial, Shown shown) {
  constexpr int steps = 32;
  std::vector<PlotPoint> points;
  for (int i = 0; i <= steps; ++i) {
    const double time = polynomial.from + (polynomial.to - polynomial.from) * i / steps;
    points.push_back({time * milliseconds, shown(polynomial.value(time))});
  }
  return points;
}

// The curves of one layer's records. `records` of them are given by `at`, as time and polynomial.
template <class At, class Shown>
void add_curves(const std::string& name, std::size_t records, std::size_t layers, At at,
                Shown shown, std::vector<Series>& time_curves, std::vector<Series>& range_curves) {
  Series along{name, {}};
  for (std::size_t i = 0; i < records; i += stride_of(records)) {
    const auto [time, values] = at(i);
    along.points.push_back({time, shown(values.value((values.from + values.to) / 2))});
  }
  time_curves.push_back(std::move(along));
  std::vector<std::size_t> shown_records = {records / 2};
  if (layers <= most_layers_in_full) shown_records = {0, records / 2, records - 1};
  shown_records.erase(std::unique(shown_records.begin(), shown_records.end()), shown_records.end());
  for (const std::size_t i : shown_records) {
    const auto [time, values] = at(i);
    range_curves.push_back({name + " at " + fixed(time, 1) + " s", over_range(values, shown)});
  }
}

template <class Product>
void add_doppler(const Product& product, const lmx::c_datetime& start, Acquisition& result) {
  const auto& doppler = product.get_processing().get_doppler();
  for (std::size_t i = 0; i < doppler.size_dopplerCentroid(); ++i) {
    const auto& layer = doppler.get_dopplerCentroid(i);
    if (layer.size_dopplerEstimate() == 0) continue;
    const auto at = [&](std::size_t record) {
      const auto& estimate = layer.get_dopplerEstimate(record);
      return std::pair(seconds_between(start, estimate.get_timeUTC()),
                       polynomial(estimate.get_combinedDoppler()));
    };
    add_curves(
        curve_name(layer), layer.size_dopplerEstimate(), doppler.size_dopplerCentroid(), at,
        [](double hertz) { return hertz; }, result.doppler_over_time, result.doppler_over_range);
  }
}

// A constant without a layer's number or polarisation is for all of them.
template <class Constant, class Layer>
bool is_of_layer(const Constant& constant, const Layer& layer) {
  if (constant.isset_layerIndex()) {
    return constant.get_layerIndex() == std::to_string(layer.get_layerIndex());
  }
  return !constant.isset_polLayer() || constant.get_polLayer() == layer.get_polLayer();
}

// The calibration factor of a layer (and beam); the layer's first where its beams are not told.
template <class Product, class Layer>
std::optional<double> calibration_factor(const Product& product, const Layer& layer) {
  const auto& calibration = product.get_calibration();
  std::optional<double> found;
  for (std::size_t i = 0; i < calibration.size_calibrationConstant(); ++i) {
    const auto& constant = calibration.get_calibrationConstant(i);
    if (!is_of_layer(constant, layer)) continue;
    const double factor = constant.get_calFactor().get_calFactor();
    const bool same_beam = constant.isset_beamID() && layer.isset_beamID() &&
                           constant.get_beamID() == layer.get_beamID();
    if (same_beam) return factor;
    if (!found) found = factor;
  }
  return found;
}

// Noise polynomials give intensities in squared digital numbers; times the calibration factor they
// are radar brightness.
template <class Product>
void add_noise(const Product& product, const lmx::c_datetime& start, Acquisition& result) {
  for (std::size_t i = 0; i < product.size_noise(); ++i) {
    const auto& layer = product.get_noise(i);
    const auto factor = calibration_factor(product, layer);
    if (layer.size_imageNoise() == 0 || !factor) continue;
    const auto at = [&](std::size_t record) {
      const auto& noise = layer.get_imageNoise(record);
      return std::pair(
          seconds_between(start, noise.get_timeUTC()),
          noise.size_noiseEstimate() > 0 ? polynomial(noise.get_noiseEstimate(0)) : Polynomial{});
    };
    add_curves(
        curve_name(layer), layer.size_imageNoise(), product.size_noise(), at,
        [&](double intensity) { return 10 * std::log10(*factor * intensity); },
        result.noise_over_time, result.noise_over_range);
  }
}

template <class Product>
void add_orbit(const Product& product, const lmx::c_datetime& start, Acquisition& result) {
  const auto& orbit = product.get_platform().get_orbit();
  for (std::size_t i = 0; i < orbit.size_stateVec(); i += stride_of(orbit.size_stateVec())) {
    const auto& state = orbit.get_stateVec(i);
    result.orbit.push_back({seconds_between(start, state.get_timeUTC()),
                            {state.get_posX(), state.get_posY(), state.get_posZ()},
                            {state.get_velX(), state.get_velY(), state.get_velZ()}});
  }
}

// "2008-03-12 05:17:46.250 UTC"
std::string time_to_milliseconds(const lmx::c_datetime& time) {
  constexpr std::size_t to_milliseconds = 23;
  return time_in_words(time).substr(0, to_milliseconds) + " UTC";
}

std::string place_in_words(double latitude, double longitude) {
  return fixed(std::abs(latitude), 4) + (latitude < 0 ? "° S " : "° N ") +
         fixed(std::abs(longitude), 4) + (longitude < 0 ? "° W" : "° E");
}

template <class Product>
void add_facts(const Product& product, Acquisition& result) {
  const auto& info = product.get_productInfo();
  const auto& mission = info.get_missionInfo();
  const auto& acquisition = info.get_acquisitionInfo();
  const auto& variant = info.get_productVariantInfo();
  const auto& scene = info.get_sceneInfo();
  const auto& centre = scene.get_sceneCenterCoord();
  const auto& start = scene.get_start().get_timeUTC();
  const auto& pols = acquisition.get_polarisationList();
  const std::string mode = joined(acquisition.size_imagingMode(), [&](std::size_t i) {
    return imaging_mode_in_words(acquisition.get_imagingMode(i));
  });
  const std::string variants = joined(variant.size_productVariant(),
                                      [&](std::size_t i) { return variant.get_productVariant(i); });
  const std::string direction = joined(
      mission.size_orbitDirection(), [&](std::size_t i) { return mission.get_orbitDirection(i); });
  const std::string polarisations =
      joined(pols.size_polLayer(), [&](std::size_t i) { return pols.get_polLayer(i); });
  result.duration = seconds_between(start, scene.get_stop().get_timeUTC());
  result.subtitle =
      variants + " · " + mode + " · " + polarisations + " · " + time_to_milliseconds(start);
  result.facts = {{"Mission", mission.get_mission()},
                  {"Product", variant.get_productType()},
                  {"Imaging mode", mode},
                  {"Polarisations", polarisations},
                  {"Look", acquisition.get_lookDirection()},
                  {"Beam", acquisition.get_elevationBeamConfiguration()},
                  {"Orbit", std::to_string(mission.get_absOrbit()) + " (relative " +
                                std::to_string(mission.get_relOrbit()) + ", cycle " +
                                std::to_string(mission.get_orbitCycle()) + "), " + direction},
                  {"Start", time_to_milliseconds(start)},
                  {"Stop", time_to_milliseconds(scene.get_stop().get_timeUTC())},
                  {"Duration", fixed(result.duration, 3) + " s"},
                  {"Scene centre", place_in_words(centre.get_lat(), centre.get_lon())},
                  {"Incidence angle", fixed(centre.get_incidenceAngle(), 2) + "°"},
                  {"Heading", fixed(scene.get_headingAngle(), 2) + "°"},
                  {"Average height", fixed(scene.get_sceneAverageHeight(), 1) + " m"},
                  {"Processed at", info.get_generationInfo().get_level1ProcessingFacility()},
                  {"Copyright", info.get_generationInfo().get_copyrightInfo()}};
}

void add_calibration(const std::optional<gridkit::ProductFacts>& known, Acquisition& result) {
  if (!known || known->calibration.empty()) return;
  const auto& images = known->calibration;
  result.facts.push_back({"Calibration factor", joined(images.size(), [&](std::size_t i) {
                            return calibration_in_words(images[i]);
                          })});
}

}  // namespace

double Polynomial::value(double at) const {
  double sum = 0;
  for (const auto& [exponent, coefficient] : terms) {
    sum += coefficient * std::pow(at - reference, exponent);
  }
  return sum;
}

Acquisition read_acquisition(const std::string& path, const std::string& schema,
                             const std::optional<gridkit::ProductFacts>& known) {
  return with_root(schema, [&](auto& root) {
    bind_leniently(root, path);
    const auto& product = std::as_const(root).get_level1Product();
    const auto& start = product.get_productInfo().get_sceneInfo().get_start().get_timeUTC();
    Acquisition result;
    add_facts(product, result);
    add_calibration(known, result);
    add_orbit(product, start, result);
    add_doppler(product, start, result);
    add_noise(product, start, result);
    return result;
  });
}

}  // namespace report
