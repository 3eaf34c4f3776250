#include "tools/gridkit/read/standard_output.h"

#include <cerrno>
#include <cstdio>

#include "gridkit/error.h"
#include "gridkit/os_error.h"

void write_to_standard_output(std::span<const std::byte> bytes) {
  if (bytes.empty()) return;  // fwrite must not see the null pointer of an empty span
  const bool written = std::fwrite(bytes.data(), 1, bytes.size(), stdout) == bytes.size();
  if (written && std::fflush(stdout) == 0) return;
  throw gridkit::Error("standard output cannot be written: " + gridkit::os_error_in_words(errno));
}
