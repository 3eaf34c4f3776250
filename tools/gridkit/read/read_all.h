#pragma once

#include <string>

#include "gridkit/product.h"
#include "tools/gridkit/read/read_image.h"

// Reads every layer of a product into a folder, each into a file of the layer's name with the
// ending of its format; where brightness is asked for, the layers that have one. `like` tells all
// but layer and output. A folder that is missing is made. Throws gridkit::Error: before anything is
// read where an output is in the way.
void read_all(const gridkit::Product& product, const ImageRequest& like, const std::string& folder);
