#pragma once

#include <nlohmann/json.hpp>
#include <string>

// All accessors of the product view by their names, in their order; an indexed one as an array over
// the elements present, a text of an absent element as null. `path` is an annotation that binds to
// the schema without a fault.
nlohmann::ordered_json view_of(const std::string& path, const std::string& schema);
