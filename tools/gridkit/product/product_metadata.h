#pragma once

#include <string>
#include <utility>
#include <vector>

#include "gridkit/product.h"

// What a file made of an image of a product, whose polarisation is given, tells of the product, so
// that it explains itself wherever it is found: keys and values. The keys are those that GDAL's
// readers of SAR products give to such facts where they have one; docs/formats.md lists them.
// Without the facts of an annotation there is none but the program that wrote the file.
std::vector<std::pair<std::string, std::string>> product_metadata(const gridkit::Product& product,
                                                                  const std::string& polarisation);

// The polarisation of a layer's image; empty where it is not known.
std::string polarisation_of_layer(const gridkit::Product& product, const std::string& layer);
