#pragma once

#include "lmx/export.h"

namespace lmx {

// Faults of reading and writing annotation data; 0 is none. The numbers are part of the interface.
// Malformed XML has numbers of its own from 100 up.
enum elmx_error : int {
  error_none = 0,
  error_cannot_open = 1,
  error_attribute_twice = 3,
  error_nothing_chosen = 7,
  error_element_not_ended = 10,
  error_wrong_root = 16,
  error_too_long = 19,
  error_required_element_missing = 21,
  error_required_attribute_missing = 25,
  error_too_many_occurrences = 26,
  error_unreadable_attribute = 28,
  error_unreadable_element = 29,
  error_no_choice_present = 31,
  error_element_empty = 32,
  error_invalid_value = 35,
  error_above_upper_bound = 36,
  error_below_lower_bound = 37,
  error_not_in_enumeration = 38,
  error_unknown_attribute = 39,
  error_nothing_read = 42,
  error_chosen_but_null = 45,
  error_malformed = 100,
  error_truncated = 101,
  error_doctype = 102,
  error_encoding = 103,
  error_reading = 104,
  error_too_deep = 105,
  error_unexpected_text = 106,
};

// What a fault means, in a few English words; "unknown fault" for a number of nobody's.
LMX_API const char* meaning(elmx_error error);

// How a value's whitespace is treated: kept as it stands, or stripped at both ends with inner runs
// reduced to one blank.
enum elmx_whitespace : int { whitespace_preserve = 0, whitespace_collapse = 2 };

}  // namespace lmx
