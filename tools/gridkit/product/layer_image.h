#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "gridkit/product.h"

// Which of the product's images, of so many and counted from 0, a layer shows: layers of an image
// follow each other, as many for each. Nothing where they cannot be told apart so.
std::optional<std::size_t> image_of_layer(const gridkit::Product& product, const std::string& layer,
                                          std::size_t images);
