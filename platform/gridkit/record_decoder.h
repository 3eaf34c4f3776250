#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "gridkit/export.h"

namespace gridkit {

// An item of an enumeration.
struct EnumerationItem {
  std::int32_t number;
  std::string text;
};

// One field of a decoded record, with its name in the dictionary.
struct DecodedField {
  std::string name;
  std::variant<EnumerationItem, char, std::int32_t, double, std::vector<double>> value;
};

// Takes an encoded record apart by its dictionary's text alone. `type` names the design. Throws
// Error that says what does not fit: a text that is no dictionary, with its line; a design that it
// lacks; a record shorter or longer than its fields, or with a hostile count or an item outside its
// enumeration, with the field and the byte offset.
GRIDKIT_API std::vector<DecodedField> decode_record(std::string_view dictionary,
                                                    std::string_view type,
                                                    std::span<const std::byte> bytes);

// The encoded form of such fields, byte for byte what was decoded. Throws Error where the fields
// are not the design's.
GRIDKIT_API std::vector<std::byte> encode_record(std::string_view dictionary, std::string_view type,
                                                 std::span<const DecodedField> fields);

}  // namespace gridkit
