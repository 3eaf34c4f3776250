#pragma once

#include <iostream>
#include <nlohmann/json.hpp>

// Prints a document on standard output, a member a line. Bytes that are no UTF-8, which paths may
// hold, become U+FFFD.
inline void print_json(const nlohmann::ordered_json& document) {
  std::cout << document.dump(2, ' ', false, nlohmann::json::error_handler_t::replace) << '\n';
}
