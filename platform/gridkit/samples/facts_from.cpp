#include "gridkit/samples/facts_from.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "rmdllib/ellipsoid.h"

namespace gridkit {

namespace {

std::string text(const char* told) {
  return told == nullptr ? "" : told;
}

ProductFacts::Place place(const gkc_Place& told) {
  return {told.latitude, told.longitude};
}

// The straight way between two places: scenes are small against the Earth.
double metres(const ProductFacts::Place& from, const ProductFacts::Place& to) {
  const auto earth = rmdllib::Ellipsoid::wgs84();
  const auto way = earth.to_earth_fixed({to.latitude, to.longitude, 0}) -
                   earth.to_earth_fixed({from.latitude, from.longitude, 0});
  return std::sqrt(dot(way, way));
}

ProductFacts::Raster raster(const gkc_ProductFacts& told) {
  ProductFacts::Raster known;
  known.lines = told.lines;
  known.samples = told.samples;
  known.line_spacing_metres = told.line_spacing;
  known.sample_spacing_metres = told.sample_spacing;
  if (told.has_ground_spacing != 0) {
    known.ground_spacing_metres = {told.ground_spacing_near, told.ground_spacing_far};
  }
  known.azimuth_resolution_metres = told.azimuth_resolution;
  known.ground_range_resolution_metres = told.ground_range_resolution;
  return known;
}

std::vector<ImageCalibration> calibration(const gkc_ProductFacts& told) {
  std::vector<ImageCalibration> images;
  const auto* bytes = reinterpret_cast<const std::byte*>(told.images);
  for (std::int32_t i = 0; i < told.image_count; ++i) {
    const auto& image = *reinterpret_cast<const gkc_ImageFactors*>(
        bytes + static_cast<std::size_t>(i) * told.image_size);
    images.push_back({text(image.polarisation),
                      std::vector<double>(image.factors, image.factors + image.count)});
  }
  return images;
}

}  // namespace

ProductFacts facts_from(const gkc_ProductFacts& told) {
  ProductFacts facts;
  facts.name = text(told.name);
  facts.variant = text(told.variant);
  facts.resolution_variant = text(told.resolution_variant);
  facts.type = text(told.type);
  facts.imaging_mode = text(told.imaging_mode);
  facts.polarisation_mode = text(told.polarisation_mode);
  facts.beam = text(told.beam);
  facts.look = text(told.look);
  facts.processing_software = text(told.processing_software);
  facts.mission = text(told.mission);
  facts.orbit = told.orbit;
  facts.relative_orbit = told.relative_orbit;
  facts.orbit_cycle = told.orbit_cycle;
  facts.pass = text(told.pass);
  facts.start = text(told.start);
  facts.stop = text(told.stop);
  facts.centre = place(told.centre);
  facts.incidence_degrees = told.incidence;
  facts.average_height_metres = told.average_height;
  facts.is_on_map = told.is_on_map != 0;
  for (std::int32_t i = 0; i < told.polarisation_count; ++i) {
    facts.polarisations.push_back(text(told.polarisations[i]));
  }
  for (std::int32_t i = 0; i < told.corner_count; ++i) {
    facts.corners.push_back(place(told.corners[i]));
  }
  // The second corner ends the first one's line, the third begins the last line.
  if (facts.corners.size() >= 3) {
    facts.extent = {metres(facts.corners[0], facts.corners[2]),
                    metres(facts.corners[0], facts.corners[1])};
  }
  if (told.has_raster != 0) facts.raster = raster(told);
  facts.calibration = calibration(told);
  return facts;
}

}  // namespace gridkit
