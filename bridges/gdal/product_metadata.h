#pragma once

#include <string>
#include <utility>
#include <vector>

#include "bridges/gdal/raster_source.h"

namespace gridkit_gdal {

// What a product's description tells of the acquisition, by the names that `gridkit read` writes
// into its files. What is not told is left out; a description that cannot be had is reported.
std::vector<std::pair<std::string, std::string>> metadata_of(const Product& product);

// What is to be told of one image or layer beside that.
std::vector<std::pair<std::string, std::string>> metadata_of(const RasterSource& source);

}  // namespace gridkit_gdal
