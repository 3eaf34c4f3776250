#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "companion/annotated_facts.h"
#include "companion/failure.h"
#include "companion/noise_facts.h"
#include "lmx/datetime.h"

namespace companion {

// What an annotation says of an image file.
struct ImageFileFacts {
  std::string path;               // below the annotation's folder
  std::string polarisation;       // such as "HH"
  double calibration_factor = 0;  // 0 where there is none, or several that differ
  // When the first line of each burst was seen, in the annotation's own words; empty without
  // bursts.
  std::vector<std::string> burst_starts;
  NoiseFacts noise;
};

// When and how far away an annotation says the scene was seen, and where it says that the points of
// a geolocation grid are.
struct SceneFacts {
  lmx::c_datetime start;
  lmx::c_datetime stop;
  double first_range_time = 0;  // s, both ways
  double last_range_time = 0;
  std::vector<std::string> grid_files;  // paths below the annotation's folder
};

// What an annotation says of its product's images, whatever its schema version and mission.
struct ProductFacts {
  bool is_complex = false;
  bool has_paired_layers = false;  // the plug-in lists two layers an image
  std::int32_t lines = 0;          // of every image
  std::int32_t samples = 0;        // of a line
  bool is_on_map = false;          // lines and samples follow a map, not the times
  SceneFacts scene;
  AnnotatedFacts annotated;
  std::vector<ImageFileFacts> files;
  std::vector<Failure> passed_over;  // by a lenient reading
};

enum class Reading {
  strict,
  lenient  // over the values that schema/lenience.h tells
};

// Binds the annotation and takes the facts out of it. Throws Failure: a file that is no annotation
// of a known version, one with a fault, one without images.
ProductFacts read_product_facts(const std::string& path, Reading reading);

}  // namespace companion
