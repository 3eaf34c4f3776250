#pragma once

#include <cstdio>
#include <cstdlib>

// What must hold whatever the input: the process ends where it does not.
inline void expect(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "expected: %s\n", what);
  std::abort();
}
