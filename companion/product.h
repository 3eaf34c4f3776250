#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <vector>

#include "companion/annotated_facts.h"
#include "companion/cosar_file.h"
#include "companion/detected_image.h"
#include "companion/grid_on_demand.h"
#include "companion/noise_facts.h"
#include "companion/product_facts.h"
#include "companion/window.h"
#include "gridkit/companion.h"

namespace companion {

// One image: a burst of a complex file, or a detected file.
struct Image {
  std::string name;
  std::string polarisation;
  std::string first_line_utc;
  double calibration_factor = 0;
  const NoiseFacts* noise = nullptr;  // of the product's list
  std::int32_t burst = 0;             // from 1; 0: the file is one image
  std::int32_t image_file = 0;
  std::int32_t magnitude_layer = -1;  // place in the plug-in's list of layers, -1: none
  std::int32_t phase_layer = -1;
  std::string magnitude_layer_name;
  std::string phase_layer_name;
  // One of the two.
  const CosarFile* cosar = nullptr;
  const CosarBurst* cosar_burst = nullptr;
  DetectedImage* detected = nullptr;

  const std::string& path() const { return cosar != nullptr ? cosar->path : detected->path(); }
  std::int64_t lines() const { return cosar != nullptr ? cosar_burst->lines : detected->lines(); }
  std::int64_t samples() const {
    return cosar != nullptr ? cosar_burst->samples : detected->samples();
  }
};

}  // namespace companion

// An open product. Nothing of it changes while it is open, except which handles of detected images
// are idle, and that the geolocation grid is read when it is first asked for.
struct gkc_Product {
  std::deque<companion::CosarFile> cosar_files;  // images point into these
  std::deque<companion::DetectedImage> detected_files;
  std::deque<companion::NoiseFacts> noise;  // one an image file; images point into it
  std::vector<companion::Image> images;
  std::unique_ptr<const companion::GridOnDemand> grid;
  std::unique_ptr<const companion::HandedFacts> facts;
  std::vector<companion::Failure> passed_over;  // of the annotation, when it was opened leniently
};

namespace companion {

// Opens a product's annotation and, unless it is to have no images, its image files. Throws
// Failure.
std::unique_ptr<gkc_Product> open_product(const std::string& path, Reading reading,
                                          bool without_images);

}  // namespace companion
