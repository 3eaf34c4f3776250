#pragma once

#include <optional>
#include <string>

#include "gridkit/export.h"
#include "gridkit/product.h"

namespace gridkit {

// Data beside the pixels by a name that the product lists; nothing for another one. Plug-ins may
// take other names for the listed ones, or answer for data that a product does not have, so only
// listed names are asked for. Throws Error.
GRIDKIT_API std::optional<NonStandardData> read_listed_data(const Product& product,
                                                            const std::string& name);

// Data as JSON: name, type, dictionary, size and the value, decoded by the dictionary that came
// with it; json/v1/data.schema.json. Two blanks a level. Throws Error for a record that does not
// fit its dictionary.
GRIDKIT_API std::string record_as_json(const std::string& name, const NonStandardData& data);

}  // namespace gridkit
