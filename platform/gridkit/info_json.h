#pragma once

#include <string>
#include <vector>

#include "gridkit/export.h"
#include "gridkit/product.h"

namespace gridkit {

// What an open product is, as JSON: its format, layers and data, and the facts that its companion
// tells (json/v2/info.schema.json); without a companion these are null. `warnings` is what there is
// to say beside it. Throws Error.
GRIDKIT_API std::string info_as_json(const Product& product,
                                     const std::vector<std::string>& warnings);

// What makes a product worth a second look without making it useless: layers whose place on a map
// cannot be told, and what a lenient open passed over. Throws Error.
GRIDKIT_API std::vector<std::string> warnings_of(const Product& product);

}  // namespace gridkit
