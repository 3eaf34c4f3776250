#pragma once

#include <string>

#include "binding/description.h"
#include "binding/storage.h"
#include "lmx/error.h"
#include "lmx/reader.h"

// The checks and conversions of the simple types: from the reader's value text into a member.

namespace binding {

// Where a value stands, for the report of a fault.
struct value_site {
  lmx::c_xml_reader& reader;
  const std::string& name;  // element's name that reports give
  const char* source_tag;
  const member& m;

  // Reports a fault by the reader's policy: 0 goes on, anything else ends the read.
  lmx::elmx_error fault(lmx::elmx_error code, std::string expected) const;
};

// How the value's whitespace is treated before it is checked: texts of elements and attributes stay
// as they are; integers, booleans, times and list-valued attributes and texts are collapsed.
// Floating numbers, of which there are most, stay as they are too: store_scalar collapses those
// that do not convert so.
lmx::elmx_whitespace whitespace_of(const member& m);

// Checks reader.value_text by the member's type, in the type's order of checks, and stores it in
// the scalar `value` (a held<VALUE> of the member's type). An enumerated text is stored before it
// is compared. The flag is set when the result is 0.
lmx::elmx_error store_scalar(const value_site& site, void* value);

// Splits reader.value_text into tokens, each checked by itself, and appends them.
lmx::elmx_error store_tokens(const value_site& site, string_list& entries);

// Appends reader.value_text as one more string.
lmx::elmx_error store_entry(const value_site& site, string_list& entries);

}  // namespace binding
