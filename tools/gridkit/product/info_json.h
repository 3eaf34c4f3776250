#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "gridkit/product.h"

// What `gridkit info --json` prints of an open product (json/v2/info.schema.json). `warnings` is
// what standard error told beside it.
nlohmann::ordered_json info_as_json(const gridkit::Product& product,
                                    const std::vector<std::string>& warnings);
