#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "gridkit/records/record_design.h"

namespace gridkit {

// The text form of a dictionary, told in gridkit/dictionary.h.

inline constexpr std::size_t longest_dictionary = std::size_t{1} << 20;  // bytes
inline constexpr std::size_t most_designs = 256;

// The text of these designs. Throws Error where it is longer than what parse_dictionary takes.
std::string dictionary_text(std::span<const RecordDesign* const> designs);

// The designs of a text. Throws Error with the line and what was expected for anything else.
std::vector<RecordDesign> parse_dictionary(std::string_view text);

}  // namespace gridkit
