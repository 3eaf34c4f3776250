#pragma once

#include <string>

#include "binding/description.h"
#include "binding/storage.h"
#include "lmx/error.h"
#include "lmx/reader.h"

// The checks and conversions of the simple types: from the reader's value text into a member.

namespace binding {

// What is expected, in words, where an element's text cannot be read at all.
inline constexpr const char* expected_text = "a text value";
inline constexpr const char* expected_markup = "any content";

// Where a value stands, for the report of a fault.
struct ValueSite {
  lmx::c_xml_reader& reader;
  const std::string& name;  // element's name that reports give
  const char* source_tag;
  const Member& m;

  // Reports a fault by the reader's policy: 0 goes on, anything else ends the read.
  lmx::elmx_error fault(lmx::elmx_error code, std::string expected) const;
};

// How the value's whitespace is treated before it is checked: texts of elements and attributes stay
// as they are; numbers, booleans, times and list-valued attributes and texts are collapsed.
lmx::elmx_whitespace whitespace_of(const Member& m);

// Checks reader.value_text by the member's type, in the type's order of checks, and stores it in
// `held`, which is of the member's form: a scalar takes it in the place of its value, a token list
// appends its tokens, each checked by itself, a string list appends it as one more. An enumerated
// text is stored before it is compared. A flag is set when the result is 0.
lmx::elmx_error store_value(const ValueSite& site, void* held);

// The same for a text and for a list of tokens without a flag, as a document's root holds them.
lmx::elmx_error store_text(const ValueSite& site, std::string& text);
lmx::elmx_error store_tokens(const ValueSite& site, StringList& entries);

}  // namespace binding
