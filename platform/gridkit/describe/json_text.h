#pragma once

#include <nlohmann/json.hpp>
#include <string>

namespace gridkit {

// A document as it is given out: a member a line. Bytes that are no UTF-8, which paths may hold,
// become U+FFFD.
inline std::string json_text(const nlohmann::ordered_json& document) {
  return document.dump(2, ' ', false, nlohmann::json::error_handler_t::replace);
}

}  // namespace gridkit
