#pragma once

#include <string>

#include "tools/simulate/options.h"

namespace simulate {

// Writes a complete product into a folder of the product's name below `folder`: annotation, images,
// truth.json and, of a scene with relief, the terrain. Gives the annotation's path. Throws
// std::invalid_argument for what cannot be simulated, and std::exception when something cannot be
// written or, without `overwrite`, the product's folder holds something already.
std::string write_product_folder(const Options& options, const std::string& folder);

}  // namespace simulate
