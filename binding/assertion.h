#pragma once

#include <string>

namespace binding {

// Ends the process over a programmer's error in the use of an annotation class.
//
// Writes "SOURCE_TAG: assertion failed: TEXT" and a line end to standard error, then aborts. The
// check is part of the delivered program: no build setting takes it out. No document can bring it
// about; documents are refused through lmx::elmx_error.
[[noreturn]] void fail_assertion(const std::string& text, const char* source_tag);

}  // namespace binding
