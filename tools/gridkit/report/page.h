#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "gridkit/product.h"

namespace report {

// Makes the page on a product: one HTML document that needs nothing from outside itself. Pictures
// have at most `picture_size` pixels on the longer side; each layer is read once, and `advance` is
// told of lines read. Throws gridkit::Error.
std::string make_page(const gridkit::Product& product, std::int32_t picture_size,
                      const std::function<void(std::int32_t)>& advance);

}  // namespace report
