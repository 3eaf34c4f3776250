#pragma once

#include <span>
#include <string_view>

namespace binding {

// One text of an enumeration and its number (elmx_enums).
struct Enumerated {
  int number;
  std::string_view text;
};

// The texts that an enumerated member may hold, in the order in which a text is compared with them.
using ValueSet = std::span<const Enumerated>;

// Number of the first entry equal to `text`, case-sensitive; 0 when there is none.
constexpr int number_of(ValueSet set, std::string_view text) {
  for (const Enumerated& entry : set) {
    if (entry.text == text) return entry.number;
  }
  return 0;
}

// The entry of that number, or null when the set does not hold it (0 is never held).
constexpr const Enumerated* entry_of(ValueSet set, int number) {
  for (const Enumerated& entry : set) {
    if (entry.number == number) return &entry;
  }
  return nullptr;
}

}  // namespace binding
