#include "binding/assertion.h"

#include <cstdio>
#include <cstdlib>

namespace binding {

void fail_assertion(const std::string& text, const char* source_tag) {
  std::fprintf(stderr, "%s: assertion failed: %s\n", source_tag, text.c_str());
  std::abort();
}

}  // namespace binding
