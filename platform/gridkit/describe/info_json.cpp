#include "gridkit/info_json.h"

#include <nlohmann/json.hpp>
#include <optional>

#include "gridkit/describe/json_text.h"
#include "gridkit/error.h"
#include "gridkit/image_radiometry.h"
#include "gridkit/layer_map.h"
#include "gridkit/product_facts.h"

namespace gridkit {

namespace {

using json = nlohmann::ordered_json;

json map_as_json(const std::optional<MapInfo>& map) {
  if (!map) return nullptr;
  return {{"projection", map->projection},
          {"upperLeft", {map->upper_left[0], map->upper_left[1]}},
          {"pixelSize", {map->pixel_size[0], map->pixel_size[1]}},
          {"units", map->units}};
}

json layer_as_json(const Layer& layer) {
  return {{"name", layer.name()},
          {"pixelType", layer.pixel_type()},
          {"layerType", layer.layer_type()},
          {"width", layer.width()},
          {"height", layer.height()},
          {"blockWidth", layer.block_width()},
          {"blockHeight", layer.block_height()},
          {"mapInfo", map_as_json(map_of(layer).info)}};
}

json place_as_json(const ProductFacts::Place& place) {
  return {{"latitude", place.latitude}, {"longitude", place.longitude}};
}

json text_or_null(const std::string& text) {
  return text.empty() ? json(nullptr) : json(text);
}

json extent_as_json(const ProductFacts& facts) {
  if (!facts.extent) return nullptr;
  json corners = json::array();
  for (const ProductFacts::Place& corner : facts.corners) corners.push_back(place_as_json(corner));
  return {{"lines", facts.extent->lines_metres},
          {"samples", facts.extent->samples_metres},
          {"corners", corners}};
}

json spacing_as_json(const ProductFacts& facts) {
  if (!facts.raster) return nullptr;
  const ProductFacts::Raster& raster = *facts.raster;
  const auto& ground = raster.ground_spacing_metres;
  return {{"line", raster.line_spacing_metres},
          {"sample", raster.sample_spacing_metres},
          {"plane", facts.is_on_map ? "map"
                    : ground        ? "slant range"
                                    : "ground range"},
          {"sampleOnGround", ground ? json({(*ground)[0], (*ground)[1]}) : json(nullptr)}};
}

json resolution_as_json(const ProductFacts& facts) {
  if (!facts.raster) return nullptr;
  return {{"azimuth", facts.raster->azimuth_resolution_metres},
          {"groundRange", facts.raster->ground_range_resolution_metres}};
}

json calibration_as_json(const ProductFacts& facts) {
  json list = json::array();
  for (const ImageCalibration& image : facts.calibration) {
    list.push_back({{"polarisation", image.polarisation}, {"factors", image.factors}});
  }
  return list;
}

// What the annotation says; null where another plug-in's product has none.
void add_facts(const std::optional<ProductFacts>& facts, json& info) {
  if (!facts) {
    for (const char* name : {"product", "mode", "polarisations", "satellite", "times", "centre",
                             "extent", "spacing", "resolution", "heights", "calibration"}) {
      info[name] = nullptr;
    }
    return;
  }
  info["product"] = {{"name", facts->name},
                     {"variant", facts->variant},
                     {"resolutionVariant", text_or_null(facts->resolution_variant)},
                     {"type", facts->type}};
  info["mode"] = {{"imaging", facts->imaging_mode},
                  {"polarisation", facts->polarisation_mode},
                  {"beam", facts->beam},
                  {"look", facts->look}};
  info["polarisations"] = facts->polarisations;
  info["satellite"] = {{"mission", facts->mission},
                       {"orbit", facts->orbit},
                       {"relativeOrbit", facts->relative_orbit},
                       {"cycle", facts->orbit_cycle},
                       {"pass", facts->pass}};
  info["times"] = {{"start", facts->start}, {"stop", facts->stop}};
  info["centre"] = place_as_json(facts->centre);
  info["centre"]["incidence"] = facts->incidence_degrees;
  info["extent"] = extent_as_json(*facts);
  info["spacing"] = spacing_as_json(*facts);
  info["resolution"] = resolution_as_json(*facts);
  info["heights"] = {{"average", facts->average_height_metres}};
  info["calibration"] = calibration_as_json(*facts);
}

// Null where nothing tells the angles, as of images on a map.
json incidence_as_json(const Product& product) try {
  const ImageIncidence incidence = incidence_of(product);
  return {{"near", incidence.near_degrees},
          {"far", incidence.far_degrees},
          {"source", incidence.angles->source()}};
} catch (const Error&) {
  return nullptr;
}

}  // namespace

std::string info_as_json(const Product& product, const std::vector<std::string>& warnings) {
  json layers = json::array();
  for (const std::string& name : product.layer_names()) {
    layers.push_back(layer_as_json(product.open_layer(name)));
  }
  json info = {{"format", product.title()},
               {"description", product.plugin().format().description},
               {"file", product.path()},
               {"layers", layers},
               {"data", product.data_names()}};
  add_facts(facts_of(product), info);
  info["incidence"] = incidence_as_json(product);
  info["warnings"] = warnings;
  return json_text(info);
}

std::vector<std::string> warnings_of(const Product& product) {
  std::vector<std::string> warnings;
  for (const std::string& name : product.layer_names()) {
    const LayerMap map = map_of(product.open_layer(name));
    if (!map.not_known.empty()) warnings.push_back(map.not_known);
  }
  const auto passed_over = product.passed_over();
  warnings.insert(warnings.end(), passed_over.begin(), passed_over.end());
  return warnings;
}

}  // namespace gridkit
