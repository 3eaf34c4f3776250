#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "gridkit/dictionary.h"

namespace gridkit {

// One field of a design.
struct RecordField {
  gkd_FieldType type;
  std::string name;
  std::vector<std::string> items = {};  // of an enumeration
  std::int32_t count = 0;               // of an array of fixed length
};

// The typed fields of a record, under a name.
struct RecordDesign {
  std::string name;
  std::vector<RecordField> fields;
};

// What keeps work and memory bounded for designs that come from elsewhere.
inline constexpr std::size_t longest_name = 255;
inline constexpr std::size_t most_fields = 1000;  // of a design
inline constexpr std::size_t most_items = 256;    // of an enumeration
inline constexpr std::size_t largest_record = 2147483647;

// An empty design. Throws Error for a name that is not of letters, digits, '_' and '.'.
RecordDesign make_design(std::string_view name);

// Appends a field. Throws Error that says what is wrong with it: its name or an item's name, a name
// that occurs twice, an enumeration without items, an array of less than one element, too many.
void add_field(RecordDesign& design, RecordField field);

// A text in quotes for a message: shortened, and with '?' for what cannot be shown.
std::string quoted(std::string_view text);

}  // namespace gridkit
