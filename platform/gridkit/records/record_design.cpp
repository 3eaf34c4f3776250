#include "gridkit/records/record_design.h"

#include <algorithm>
#include <set>
#include <utility>

#include "gridkit/error.h"

namespace gridkit {

namespace {

bool is_name_character(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' ||
         c == '.';
}

void check_name(std::string_view name) {
  if (name.empty() || !std::ranges::all_of(name, is_name_character)) {
    throw Error(quoted(name) + " is no name of letters, digits, '_' and '.'");
  }
  if (name.size() > longest_name) {
    throw Error("a name has " + std::to_string(name.size()) + " characters, at most " +
                std::to_string(longest_name) + " are allowed");
  }
}

void check_items(const RecordField& field) {
  const std::string enumeration = "the enumeration " + quoted(field.name);
  if (field.items.empty()) throw Error(enumeration + " has no items");
  if (field.items.size() > most_items) {
    throw Error(enumeration + " has more than " + std::to_string(most_items) + " items");
  }
  std::set<std::string_view> known;
  for (const std::string& item : field.items) {
    check_name(item);
    if (!known.insert(item).second) {
      throw Error(enumeration + " has the item " + quoted(item) + " twice");
    }
  }
}

}  // namespace

RecordDesign make_design(std::string_view name) {
  check_name(name);
  return {std::string(name), {}};
}

void add_field(RecordDesign& design, RecordField field) {
  check_name(field.name);
  if (field.type == gkd_Enumeration) check_items(field);
  if (field.type == gkd_DoubleArray && field.count < 1) {
    throw Error("the array " + quoted(field.name) + " has a count of " +
                std::to_string(field.count));
  }
  if (std::ranges::find(design.fields, field.name, &RecordField::name) != design.fields.end()) {
    throw Error("there is a field " + quoted(field.name) + " already");
  }
  if (design.fields.size() == most_fields) {
    throw Error("a design has at most " + std::to_string(most_fields) + " fields");
  }
  design.fields.push_back(std::move(field));
}

std::string quoted(std::string_view text) {
  constexpr std::size_t longest_shown = 40;
  std::string shown = "\"";
  for (const char c : text.substr(0, longest_shown)) shown += c >= ' ' && c <= '~' ? c : '?';
  return shown + (text.size() > longest_shown ? "...\"" : "\"");
}

}  // namespace gridkit
