#include "tools/gridkit/product/product_summary.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <string_view>
#include <utility>

#include "rmdllib/ellipsoid.h"
#include "tools/annotation/annotation_file.h"
#include "tools/annotation/check.h"
#include "tools/gridkit/product/words.h"

namespace {

struct Meaning {
  std::string_view code;
  const char* text;
};

constexpr Meaning variants[] = {{"SSC", "single-look slant-range complex"},
                                {"MGD", "multi-look ground-range detected"},
                                {"GEC", "geocoded on the ellipsoid"},
                                {"EEC", "geocoded with a terrain model"}};
constexpr Meaning resolutions[] = {{"SE", "spatially enhanced"},
                                   {"RE", "radiometrically enhanced"}};

// "StripMap (SM)", or the code alone where it says nothing more.
template <std::size_t count>
std::string explained(const std::string& code, const Meaning (&meanings)[count]) {
  const auto found = std::find_if(std::begin(meanings), std::end(meanings),
                                  [&](const Meaning& meaning) { return meaning.code == code; });
  return found == std::end(meanings) ? code : std::string(found->text) + " (" + code + ')';
}

std::string lower(std::string text) {
  for (char& c : text) c = static_cast<char>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c);
  return text;
}

template <class... Values>
std::string format(const char* pattern, Values... values) {
  char text[200];
  std::snprintf(text, sizeof text, pattern, values...);
  return text;
}

// From start to stop, the date once where they share it.
template <class Scene>
std::string interval(const Scene& scene) {
  const std::string start = time_in_words(scene.get_start().get_timeUTC());
  const std::string stop = time_in_words(scene.get_stop().get_timeUTC());
  const std::size_t date = start.find(' ');
  const bool same_day = date != std::string::npos && stop.compare(0, date, start, 0, date) == 0;
  return start + " to " + (same_day ? stop.substr(date + 1) : stop);
}

template <class Place>
std::string place(const Place& at) {
  return format("%.4f%c %.4f%c", std::abs(static_cast<double>(at.get_lat())),
                at.get_lat() < 0 ? 'S' : 'N', std::abs(static_cast<double>(at.get_lon())),
                at.get_lon() < 0 ? 'W' : 'E');
}

// The straight way between two places, in kilometres: scenes are small against the Earth.
template <class Place>
double kilometres(const Place& from, const Place& to) {
  const auto earth = rmdllib::Ellipsoid::wgs84();
  const auto way = earth.to_earth_fixed({to.get_lat(), to.get_lon(), 0}) -
                   earth.to_earth_fixed({from.get_lat(), from.get_lon(), 0});
  return std::sqrt(dot(way, way)) / 1000;
}

template <class Product>
std::string variant_row(const Product& product) {
  const auto& variant = product.get_productInfo().get_productVariantInfo();
  std::string text = joined(variant.size_productVariant(), [&](std::size_t i) {
    return explained(variant.get_productVariant(i), variants);
  });
  const std::string resolution = joined(variant.size_resolutionVariant(), [&](std::size_t i) {
    const std::string code = variant.get_resolutionVariant(i);
    return code == "UNDEFINED" ? std::string() : explained(code, resolutions);
  });
  return resolution.empty() ? text : text + ", " + resolution;
}

template <class Product>
std::string mode_row(const Product& product) {
  const auto& acquisition = product.get_productInfo().get_acquisitionInfo();
  const std::string mode = joined(acquisition.size_imagingMode(), [&](std::size_t i) {
    return imaging_mode_in_words(acquisition.get_imagingMode(i));
  });
  return mode + ", beam " + std::string(acquisition.get_elevationBeamConfiguration()) +
         ", looking " + lower(acquisition.get_lookDirection());
}

template <class Product>
std::string polarisation_row(const Product& product) {
  const auto& acquisition = product.get_productInfo().get_acquisitionInfo();
  const auto& list = acquisition.get_polarisationList();
  return joined(list.size_polLayer(), [&](std::size_t i) { return list.get_polLayer(i); }) + " (" +
         joined(acquisition.size_polarisationMode(),
                [&](std::size_t i) { return lower(acquisition.get_polarisationMode(i)); }) +
         ')';
}

template <class Product>
std::string orbit_row(const Product& product) {
  const auto& mission = product.get_productInfo().get_missionInfo();
  return std::string(mission.get_mission()) + ", orbit " + std::to_string(mission.get_absOrbit()) +
         ", " + joined(mission.size_orbitDirection(), [&](std::size_t i) {
           return lower(mission.get_orbitDirection(i));
         });
}

template <class Scene>
std::string extent_row(const Scene& scene) {
  return format("about %.1f x %.1f km",
                kilometres(scene.get_sceneCornerCoord(0), scene.get_sceneCornerCoord(1)),
                kilometres(scene.get_sceneCornerCoord(0), scene.get_sceneCornerCoord(2)));
}

// Complex images state their spacing in seconds: what that is in metres stands elsewhere.
template <class Product>
std::string spacing_row(const Product& product) {
  const auto& raster = product.get_productInfo().get_imageDataInfo().get_imageRaster(0);
  const auto& specific = product.get_productSpecific();
  std::string text;
  const auto& variant = product.get_productInfo().get_productVariantInfo();
  const bool is_complex =
      variant.size_productVariant() > 0 && variant.get_productVariant(0) == "SSC";
  if (is_complex && specific.size_complexImageInfo() > 0) {
    const auto& complex = specific.get_complexImageInfo(0);
    const auto& range = complex.get_projectedSpacingRange();
    text = format("%.3f m azimuth, %.3f m slant range (%.3f to %.3f m on the ground)",
                  static_cast<double>(complex.get_projectedSpacingAzimuth()),
                  static_cast<double>(range.get_slantRange()),
                  static_cast<double>(range.get_groundNear()),
                  static_cast<double>(range.get_groundFar()));
  } else {
    text =
        format("%.3f x %.3f m", static_cast<double>(raster.get_columnSpacing().get_columnSpacing()),
               static_cast<double>(raster.get_rowSpacing().get_rowSpacing()));
  }
  return text;
}

template <class Product>
std::vector<SummaryRow> rows_of(const Product& product) {
  const auto& info = product.get_productInfo();
  const auto& scene = info.get_sceneInfo();
  const auto& centre = scene.get_sceneCenterCoord();
  std::vector<SummaryRow> rows = {
      {"product", variant_row(product)},
      {"mode", mode_row(product)},
      {"polarisation", polarisation_row(product)},
      {"satellite", orbit_row(product)},
      {"time", interval(scene) + " UTC"},
      {"centre",
       place(centre) + format(", %.0f m above the ellipsoid, incidence %.2f degrees",
                              scene.get_sceneAverageHeight(), centre.get_incidenceAngle())}};
  if (scene.size_sceneCornerCoord() > 2) rows.push_back({"extent", extent_row(scene)});
  if (info.get_imageDataInfo().size_imageRaster() == 0) return rows;
  const auto& raster = info.get_imageDataInfo().get_imageRaster(0);
  rows.push_back(
      {"size", format("%d columns x %d lines", static_cast<int>(raster.get_numberOfColumns()),
                      static_cast<int>(raster.get_numberOfRows()))});
  rows.push_back({"spacing", spacing_row(product)});
  rows.push_back(
      {"resolution", format("%.2f m azimuth, %.2f m ground range", raster.get_azimuthResolution(),
                            raster.get_groundRangeResolution())});
  return rows;
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

// Visits the document of a valid annotation; gives an empty result for any other file.
template <class Result, class Visitor>
Result visit(const std::string& annotation, Visitor visitor) {
  const CheckResult check = check_annotation(annotation);
  if (check.error != 0) return {};
  return with_root(check.schema, [&](auto& root) {
    root.unmarshal(annotation.c_str());
    return Result(visitor(std::as_const(root.get_level1Product())));
  });
}

}  // namespace

std::vector<SummaryRow> summary_of(const std::string& annotation) {
  return visit<std::vector<SummaryRow>>(annotation,
                                        [](const auto& product) { return rows_of(product); });
}

std::vector<ImageCalibration> calibrations_of(const std::string& annotation) {
  return visit<std::vector<ImageCalibration>>(annotation, [](const auto& product) {
    std::vector<ImageCalibration> images;
    const auto& components = product.get_productComponents();
    for (std::size_t i = 0; i < components.size_imageData(); ++i) {
      const std::string polarisation = components.get_imageData(i).get_polLayer();
      images.push_back({polarisation, factors_of(product.get_calibration(), polarisation)});
    }
    return images;
  });
}
