#pragma once

#include <cstdio>
#include <cstdlib>
#include <string>

namespace binding {

// Ends the process over a programmer's error in the use of an annotation class.
//
// Writes "SOURCE_TAG: assertion failed: TEXT" and a line end to standard error, then aborts. The
// check is part of the delivered program: no build setting takes it out. Reading a document never
// brings it about: documents are refused through lmx::elmx_error.
[[noreturn]] inline void fail_assertion(const std::string& text, const char* source_tag) {
  std::fprintf(stderr, "%s: assertion failed: %s\n", source_tag, text.c_str());
  std::abort();
}

}  // namespace binding
