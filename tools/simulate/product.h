#pragma once

#include <string>

#include "tools/simulate/options.h"

namespace simulate {

// Writes a complete product into a folder of the product's name below `folder`: annotation, images,
// and truth.json. Gives the annotation's path. Throws std::exception when something cannot be made
// or written.
std::string write_product_folder(const Options& options, const std::string& folder);

// Makes image files of the right size and layout for an annotation that exists, in its own folder
// or below `folder` where one is given (the annotation is then copied there too). Samples are
// zeros; the files take hardly any room. An image that is there already is left alone. Gives the
// annotation's path. Throws std::runtime_error for an annotation that does not bind.
std::string write_images_for(const std::string& annotation, const std::string& folder);

}  // namespace simulate
