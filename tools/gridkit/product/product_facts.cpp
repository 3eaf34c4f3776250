#include "tools/gridkit/product/product_facts.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <filesystem>
#include <utility>

#include "rmdllib/ellipsoid.h"
#include "tools/annotation/annotation_file.h"
#include "tools/annotation/check.h"
#include "tools/gridkit/product/words.h"

namespace {

// The straight way between two places: scenes are small against the Earth.
double metres(const ProductFacts::Place& from, const ProductFacts::Place& to) {
  const auto earth = rmdllib::Ellipsoid::wgs84();
  const auto way = earth.to_earth_fixed({to.latitude, to.longitude, 0}) -
                   earth.to_earth_fixed({from.latitude, from.longitude, 0});
  return std::sqrt(dot(way, way));
}

template <class Product>
void add_kind(const Product& product, ProductFacts& facts) {
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
void add_acquisition(const Product& product, ProductFacts& facts) {
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
void add_orbit(const Product& product, ProductFacts& facts) {
  const auto& mission = product.get_productInfo().get_missionInfo();
  facts.mission = mission.get_mission();
  facts.orbit = mission.get_absOrbit();
  facts.relative_orbit = mission.get_relOrbit();
  facts.orbit_cycle = mission.get_orbitCycle();
  facts.pass = joined(mission.size_orbitDirection(),
                      [&](std::size_t i) { return mission.get_orbitDirection(i); });
}

template <class Product>
void add_scene(const Product& product, ProductFacts& facts) {
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
  if (facts.corners.size() < 3) return;
  // The second corner ends the first one's line, the third begins the last line.
  facts.extent = {metres(facts.corners[0], facts.corners[2]),
                  metres(facts.corners[0], facts.corners[1])};
}

// Complex images state their spacing in seconds: what that is in metres stands elsewhere.
template <class Product>
void add_raster(const Product& product, ProductFacts& facts) {
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
void add_calibration(const Product& product, ProductFacts& facts) {
  const auto& components = product.get_productComponents();
  for (std::size_t i = 0; i < components.size_imageData(); ++i) {
    const std::string polarisation = components.get_imageData(i).get_polLayer();
    facts.calibration.push_back(
        {polarisation, factors_of(product.get_calibration(), polarisation)});
  }
}

}  // namespace

std::optional<ProductFacts> read_facts(const std::string& annotation) {
  const CheckResult check = check_leniently(annotation);
  if (check.error != 0) return std::nullopt;
  return with_root(check.schema, [&](auto& root) {
    bind_leniently(root, annotation);
    const auto& product = std::as_const(root.get_level1Product());
    ProductFacts facts;
    facts.name = std::filesystem::path(annotation).stem().string();
    add_kind(product, facts);
    add_acquisition(product, facts);
    add_orbit(product, facts);
    add_scene(product, facts);
    add_raster(product, facts);
    add_calibration(product, facts);
    return std::optional(std::move(facts));
  });
}
