#include "tools/annotation/view.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <utility>

#include "tools/annotation/annotation_file.h"

namespace {

using json = nlohmann::ordered_json;

template <class Root, class Result>
json all(Root& root, Result (level1bProductBase::*accessor)(std::uint32_t), std::size_t count) {
  json values = json::array();
  for (std::uint32_t i = 0; i < count; ++i) values.push_back((root.*accessor)(i));
  return values;
}

// A text whose accessor would end the process when the element is absent.
template <class Root>
json first(Root& root, const char* (level1bProductBase::*accessor)(), bool present) {
  return present ? json((root.*accessor)()) : json(nullptr);
}

// How many elements the document holds of what the indexed accessors walk to.
struct Counts {
  std::size_t variants = 0;
  std::size_t projections = 0;
  std::size_t map_projections = 0;
  std::size_t quicklook_starts = 0;
  std::size_t state_vectors = 0;
  std::size_t coefficients = 0;
  std::size_t images = 0;
};

template <class Product>
Counts count_elements(const Product& product) {
  const auto& variant = product.get_productInfo().get_productVariantInfo();
  const auto& specific = product.get_productSpecific();
  Counts counts;
  counts.variants = variant.size_productVariant();
  counts.projections = variant.size_projection();
  counts.map_projections = variant.size_mapProjection();
  if (specific.size_complexImageInfo() > 0) {
    counts.quicklook_starts = specific.get_complexImageInfo(0).size_quicklookDataStartWith();
  }
  counts.state_vectors = product.get_platform().get_orbit().size_stateVec();
  counts.coefficients =
      specific.get_projectedImageInfo().get_slantToGroundRangeProjection().size_coefficient();
  counts.images = product.get_productComponents().size_imageData();
  return counts;
}

// Every calibration constant, of which the product view has the first one's factor alone.
template <class Calibration>
json calibration_factors(const Calibration& calibration) {
  json factors = json::array();
  for (std::size_t i = 0; i < calibration.size_calibrationConstant(); ++i) {
    const auto& constant = calibration.get_calibrationConstant(i);
    json factor;
    factor["polLayer"] = constant.isset_polLayer() ? json(constant.get_polLayer()) : json(nullptr);
    factor["beamID"] = constant.isset_beamID() ? json(constant.get_beamID()) : json(nullptr);
    factor["calFactor"] = constant.get_calFactor().get_calFactor();
    factors.push_back(std::move(factor));
  }
  return factors;
}

template <class Root>
json collect(Root& root) {
  using View = level1bProductBase;
  const Counts n = count_elements(std::as_const(root.get_level1Product()));
  json view;
  view["productVariant"] = first(root, &View::productVariant, n.variants > 0);
  view["imageDataFormat"] = root.imageDataFormat();
  view["numberOfLayers"] = root.numberOfLayers();
  view["numberOfRows"] = root.numberOfRows();
  view["numberOfColumns"] = root.numberOfColumns();
  view["mapProjection"] = first(root, &View::mapProjection, n.map_projections > 0);
  view["calFactor"] = root.calFactor();
  view["calFactors"] =
      calibration_factors(std::as_const(root.get_level1Product()).get_calibration());
  view["lookDirection"] = root.lookDirection();
  view["projection"] = first(root, &View::projection, n.projections > 0);
  view["sceneStartYear"] = root.sceneStartYear();
  view["sceneStartMonth"] = root.sceneStartMonth();
  view["sceneStartDay"] = root.sceneStartDay();
  view["sceneStartHour"] = root.sceneStartHour();
  view["sceneStartMinute"] = root.sceneStartMinute();
  view["sceneStartSecond"] = root.sceneStartSecond();
  view["sceneStopHour"] = root.sceneStopHour();
  view["sceneStopMinute"] = root.sceneStopMinute();
  view["sceneStopSecond"] = root.sceneStopSecond();
  view["centerFrequency"] = root.centerFrequency();
  view["projectedSpacingSlantRange"] = root.projectedSpacingSlantRange();
  view["projectedSpacingAzimuth"] = root.projectedSpacingAzimuth();
  view["columnSpacing"] = root.columnSpacing();
  view["rowSpacing"] = root.rowSpacing();
  view["rangeSamplingRate"] = root.rangeSamplingRate();
  view["firstPixelRangeTime"] = root.firstPixelRangeTime();
  view["sceneAverageHeight"] = root.sceneAverageHeight();
  view["firstStateYear"] = root.firstStateYear();
  view["firstStateMonth"] = root.firstStateMonth();
  view["firstStateDay"] = root.firstStateDay();
  view["firstStateHour"] = root.firstStateHour();
  view["firstStateMinute"] = root.firstStateMinute();
  view["firstStateSecond"] = root.firstStateSecond();
  view["numStateVectors"] = root.numStateVectors();
  view["quicklookDataStartWith"] =
      first(root, &View::quicklookDataStartWith, n.quicklook_starts > 0);
  view["stateVectorTimeSpacing"] = root.stateVectorTimeSpacing();
  view["stateVecPosX"] = all(root, &View::stateVecPosX, n.state_vectors);
  view["stateVecPosY"] = all(root, &View::stateVecPosY, n.state_vectors);
  view["stateVecPosZ"] = all(root, &View::stateVecPosZ, n.state_vectors);
  view["stateVecVelX"] = all(root, &View::stateVecVelX, n.state_vectors);
  view["stateVecVelY"] = all(root, &View::stateVecVelY, n.state_vectors);
  view["stateVecVelZ"] = all(root, &View::stateVecVelZ, n.state_vectors);
  view["slantToGroundPolynomialDegree"] = root.slantToGroundPolynomialDegree();
  view["slantRangeSpacing"] = root.slantRangeSpacing();
  view["slantToGroundCoefficient"] = all(root, &View::slantToGroundCoefficient, n.coefficients);
  view["imageDataPath"] = all(root, &View::imageDataPath, n.images);
  view["imageDataFilename"] = all(root, &View::imageDataFilename, n.images);
  view["polLayer"] = all(root, &View::polLayer, n.images);
  return view;
}

struct Unit {
  std::string_view accessor;
  std::string_view unit;
};

constexpr std::array<Unit, 18> units = {{{"sceneStartSecond", "s"},
                                         {"sceneStopSecond", "s"},
                                         {"centerFrequency", "Hz"},
                                         {"projectedSpacingSlantRange", "m"},
                                         {"projectedSpacingAzimuth", "m"},
                                         {"rangeSamplingRate", "Hz"},
                                         {"firstPixelRangeTime", "s"},
                                         {"sceneAverageHeight", "m"},
                                         {"firstStateSecond", "s"},
                                         {"stateVectorTimeSpacing", "s"},
                                         {"stateVecPosX", "m"},
                                         {"stateVecPosY", "m"},
                                         {"stateVecPosZ", "m"},
                                         {"stateVecVelX", "m/s"},
                                         {"stateVecVelY", "m/s"},
                                         {"stateVecVelZ", "m/s"},
                                         {"slantRangeSpacing", "m"},
                                         {"slantToGroundCoefficient", "m/s^i"}}};

}  // namespace

std::string unit_of(std::string_view accessor, bool is_complex) {
  if (accessor == "columnSpacing" || accessor == "rowSpacing") return is_complex ? "s" : "m";
  const auto found = std::find_if(units.begin(), units.end(),
                                  [&](const Unit& unit) { return unit.accessor == accessor; });
  return found == units.end() ? std::string() : std::string(found->unit);
}

nlohmann::ordered_json view_of(const std::string& path, const std::string& schema) {
  return with_root(schema, [&](auto& root) {
    bind_leniently(root, path);
    return collect(root);
  });
}
