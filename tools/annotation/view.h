#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

// All accessors of the product view by their names, in their order; an indexed one as an array over
// the elements present, a text of an absent element as null. After the first calibration factor,
// which the view has, come those of all polarisations and beams as `calFactors`. `path` is an
// annotation that binds to the schema without a fault.
nlohmann::ordered_json view_of(const std::string& path, const std::string& schema);

// The unit of an accessor's values, empty for those that have none. Complex images (COSAR) state
// their spacings in seconds, others in metres. A coefficient of a polynomial in seconds has the
// unit of the power that it stands at: "m/s^i".
std::string unit_of(std::string_view accessor, bool is_complex);
