#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "gridkit/companion.h"

namespace companion {

// What an annotation says of the first image of its product, which holds for every one.
struct AnnotatedRaster {
  std::int32_t lines = 0;
  std::int32_t samples = 0;
  double line_spacing_metres = 0;
  double sample_spacing_metres = 0;
  std::optional<std::array<double, 2>> ground_spacing_metres;  // near, far
  double azimuth_resolution_metres = 0;
  double ground_range_resolution_metres = 0;
};

// What an annotation says of its product at a glance, see gkc_ProductFacts for what each is.
struct AnnotatedFacts {
  std::string name;
  std::string variant;
  std::string resolution_variant;
  std::string type;
  std::string imaging_mode;
  std::string polarisation_mode;
  std::string beam;
  std::string look;
  std::vector<std::string> polarisations;
  std::string processing_software;
  std::string mission;
  std::int32_t orbit = 0;
  std::int32_t relative_orbit = 0;
  std::int32_t orbit_cycle = 0;
  std::string pass;
  std::string start;
  std::string stop;
  gkc_Place centre{};
  double incidence_degrees = 0;
  double average_height_metres = 0;
  std::vector<gkc_Place> corners;

  std::optional<AnnotatedRaster> raster;
  bool is_on_map = false;

  struct Factors {
    std::string polarisation;
    std::vector<double> factors;
  };
  std::vector<Factors> calibration;
};

// The same in the form of the contract, which points into it.
class HandedFacts {
 public:
  explicit HandedFacts(const AnnotatedFacts& facts);
  HandedFacts(const HandedFacts&) = delete;
  HandedFacts& operator=(const HandedFacts&) = delete;

  const gkc_ProductFacts& told() const { return told_; }

 private:
  AnnotatedFacts facts_;
  std::vector<const char*> polarisations_;
  std::vector<gkc_ImageFactors> images_;
  gkc_ProductFacts told_{};
};

// How the facts are taken out of the classes of whichever schema version.
namespace annotated {

// The texts that `get` gives for 0 to size - 1, with commas between; empty ones are passed over.
template <class Get>
std::string joined(std::size_t size, Get get) {
  std::string text;
  for (std::size_t i = 0; i < size; ++i) {
    const std::string part = get(i);
    if (part.empty()) continue;
    if (!text.empty()) text += ", ";
    text += part;
  }
  return text;
}

template <class Product>
void add_kind(const Product& product, AnnotatedFacts& facts) {
  const auto& variant = product.get_productInfo().get_productVariantInfo();
  facts.variant = joined(variant.size_productVariant(),
                         [&](std::size_t i) { return variant.get_productVariant(i); });
  facts.resolution_variant = joined(variant.size_resolutionVariant(), [&](std::size_t i) {
    const std::string code = variant.get_resolutionVariant(i);
    return code == "UNDEFINED" ? std::string() : code;
  });
  facts.type = variant.get_productType();
  const auto& system = product.get_generalHeader().get_generationSystem();
  facts.processing_software =
      std::string(system.get_generationSystem()) + ' ' + std::string(system.get_version());
  facts.is_on_map = facts.variant == "GEC" || facts.variant == "EEC";
}

template <class Product>
void add_acquisition(const Product& product, AnnotatedFacts& facts) {
  const auto& acquisition = product.get_productInfo().get_acquisitionInfo();
  facts.imaging_mode = joined(acquisition.size_imagingMode(),
                              [&](std::size_t i) { return acquisition.get_imagingMode(i); });
  facts.polarisation_mode = joined(acquisition.size_polarisationMode(), [&](std::size_t i) {
    return acquisition.get_polarisationMode(i);
  });
  facts.beam = acquisition.get_elevationBeamConfiguration();
  facts.look = acquisition.get_lookDirection();
  const auto& list = acquisition.get_polarisationList();
  for (std::size_t i = 0; i < list.size_polLayer(); ++i) {
    facts.polarisations.emplace_back(list.get_polLayer(i));
  }
}

template <class Product>
void add_orbit(const Product& product, AnnotatedFacts& facts) {
  const auto& mission = product.get_productInfo().get_missionInfo();
  facts.mission = mission.get_mission();
  facts.orbit = mission.get_absOrbit();
  facts.relative_orbit = mission.get_relOrbit();
  facts.orbit_cycle = mission.get_orbitCycle();
  facts.pass = joined(mission.size_orbitDirection(),
                      [&](std::size_t i) { return mission.get_orbitDirection(i); });
}

template <class Product>
void add_scene(const Product& product, AnnotatedFacts& facts) {
  const auto& scene = product.get_productInfo().get_sceneInfo();
  const auto& centre = scene.get_sceneCenterCoord();
  facts.start = scene.get_start().get_timeUTC().text();
  facts.stop = scene.get_stop().get_timeUTC().text();
  facts.centre = {centre.get_lat(), centre.get_lon()};
  facts.incidence_degrees = centre.get_incidenceAngle();
  facts.average_height_metres = scene.get_sceneAverageHeight();
  for (std::size_t i = 0; i < scene.size_sceneCornerCoord(); ++i) {
    const auto& corner = scene.get_sceneCornerCoord(i);
    facts.corners.push_back({corner.get_lat(), corner.get_lon()});
  }
}

// Complex images state their spacing in seconds: what that is in metres stands elsewhere.
template <class Product>
void add_raster(const Product& product, AnnotatedFacts& facts) {
  const auto& info = product.get_productInfo().get_imageDataInfo();
  if (info.size_imageRaster() == 0) return;
  const auto& raster = info.get_imageRaster(0);
  auto& result = facts.raster.emplace();
  result.lines = raster.get_numberOfRows();
  result.samples = raster.get_numberOfColumns();
  result.line_spacing_metres = raster.get_columnSpacing().get_columnSpacing();
  result.sample_spacing_metres = raster.get_rowSpacing().get_rowSpacing();
  result.azimuth_resolution_metres = raster.get_azimuthResolution();
  result.ground_range_resolution_metres = raster.get_groundRangeResolution();
  const auto& specific = product.get_productSpecific();
  if (facts.variant != "SSC" || specific.size_complexImageInfo() == 0) return;
  const auto& complex = specific.get_complexImageInfo(0);
  const auto& range = complex.get_projectedSpacingRange();
  result.line_spacing_metres = complex.get_projectedSpacingAzimuth();
  result.sample_spacing_metres = range.get_slantRange();
  result.ground_spacing_metres = {range.get_groundNear(), range.get_groundFar()};
}

template <class Calibration>
std::vector<double> factors_of(const Calibration& calibration, const std::string& polarisation) {
  std::vector<double> factors;
  for (std::size_t i = 0; i < calibration.size_calibrationConstant(); ++i) {
    const auto& constant = calibration.get_calibrationConstant(i);
    if (constant.isset_polLayer() && constant.get_polLayer() != polarisation) continue;
    const double factor = constant.get_calFactor().get_calFactor();
    if (std::find(factors.begin(), factors.end(), factor) == factors.end()) {
      factors.push_back(factor);
    }
  }
  return factors;
}

template <class Product>
void add_calibration(const Product& product, AnnotatedFacts& facts) {
  const auto& components = product.get_productComponents();
  for (std::size_t i = 0; i < components.size_imageData(); ++i) {
    const std::string polarisation = components.get_imageData(i).get_polLayer();
    facts.calibration.push_back(
        {polarisation, factors_of(product.get_calibration(), polarisation)});
  }
}

}  // namespace annotated

template <class Product>
AnnotatedFacts annotated_facts(const Product& product, const std::string& path) {
  AnnotatedFacts facts;
  facts.name = std::filesystem::path(path).stem().string();
  annotated::add_kind(product, facts);
  annotated::add_acquisition(product, facts);
  annotated::add_orbit(product, facts);
  annotated::add_scene(product, facts);
  annotated::add_raster(product, facts);
  annotated::add_calibration(product, facts);
  return facts;
}

}  // namespace companion
