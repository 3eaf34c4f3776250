#pragma once

#include <nlohmann/json.hpp>
#include <vector>

#include "tools/simulate/annotation_source.h"

namespace simulate {

// Name of a synthetic terrain's file in the product's folder.
inline constexpr const char* terrain_name = "terrain.tif";

// What is true of a simulated product: its targets and corners (degrees, metres; lines and samples
// at pixel centres from 0), its orbit (Earth-fixed, seconds from the epoch), and every scalar it
// was made from. Azimuth and range times of targets are those of the geometry, those of corners
// what the annotation tells.
nlohmann::ordered_json truth_of(const AnnotationSource& source, const std::vector<Target>& targets);

}  // namespace simulate
