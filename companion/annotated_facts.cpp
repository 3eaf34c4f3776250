#include "companion/annotated_facts.h"

namespace companion {

HandedFacts::HandedFacts(const AnnotatedFacts& facts) : facts_(facts) {
  for (const std::string& polarisation : facts_.polarisations) {
    polarisations_.push_back(polarisation.c_str());
  }
  for (const auto& [polarisation, factors] : facts_.calibration) {
    images_.push_back(
        {polarisation.c_str(), factors.data(), static_cast<std::int32_t>(factors.size()), 0});
  }
  told_.name = facts_.name.c_str();
  told_.variant = facts_.variant.c_str();
  told_.resolution_variant = facts_.resolution_variant.c_str();
  told_.type = facts_.type.c_str();
  told_.imaging_mode = facts_.imaging_mode.c_str();
  told_.polarisation_mode = facts_.polarisation_mode.c_str();
  told_.beam = facts_.beam.c_str();
  told_.look = facts_.look.c_str();
  told_.processing_software = facts_.processing_software.c_str();
  told_.mission = facts_.mission.c_str();
  told_.pass = facts_.pass.c_str();
  told_.start = facts_.start.c_str();
  told_.stop = facts_.stop.c_str();
  told_.polarisations = polarisations_.data();
  told_.polarisation_count = static_cast<std::int32_t>(polarisations_.size());
  told_.corners = facts_.corners.data();
  told_.corner_count = static_cast<std::int32_t>(facts_.corners.size());
  told_.images = images_.data();
  told_.image_size = sizeof(gkc_ImageFactors);
  told_.image_count = static_cast<std::int32_t>(images_.size());
  told_.is_on_map = facts_.is_on_map ? 1 : 0;
  told_.orbit = facts_.orbit;
  told_.relative_orbit = facts_.relative_orbit;
  told_.orbit_cycle = facts_.orbit_cycle;
  told_.centre = facts_.centre;
  told_.incidence = facts_.incidence_degrees;
  told_.average_height = facts_.average_height_metres;
  if (!facts_.raster) return;
  const AnnotatedRaster& raster = *facts_.raster;
  told_.has_raster = 1;
  told_.lines = raster.lines;
  told_.samples = raster.samples;
  told_.line_spacing = raster.line_spacing_metres;
  told_.sample_spacing = raster.sample_spacing_metres;
  told_.azimuth_resolution = raster.azimuth_resolution_metres;
  told_.ground_range_resolution = raster.ground_range_resolution_metres;
  if (!raster.ground_spacing_metres) return;
  told_.has_ground_spacing = 1;
  told_.ground_spacing_near = raster.ground_spacing_metres->front();
  told_.ground_spacing_far = raster.ground_spacing_metres->back();
}

}  // namespace companion
