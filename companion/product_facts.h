#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace companion {

// What an annotation says of an image file.
struct ImageFileFacts {
  std::string path;               // below the annotation's folder
  std::string polarisation;       // such as "HH"
  double calibration_factor = 0;  // 0 where there is none, or several that differ
  // When the first line of each burst was seen, in the annotation's own words; empty without
  // bursts.
  std::vector<std::string> burst_starts;
};

// What an annotation says of its product's images, whatever its schema version and mission.
struct ProductFacts {
  bool is_complex = false;
  bool has_paired_layers = false;  // the plug-in lists two layers an image
  std::int32_t lines = 0;          // of every image
  std::int32_t samples = 0;        // of a line
  std::string start;               // of the scene
  std::vector<ImageFileFacts> files;
};

// Binds the annotation, strictly, and takes the facts out of it. Throws Failure: a file that is no
// annotation of a known version, one with a fault, one without images.
ProductFacts read_product_facts(const std::string& path);

}  // namespace companion
