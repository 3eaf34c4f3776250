#pragma once

#include <cstdint>

#include "tools/gridkit/terminal.h"

// The bar of work that goes through images by lines, and where such work is stopped.
class LineProgress {
 public:
  LineProgress(std::int64_t lines, bool quiet) : bar_(quiet), lines_(lines) {}

  // Throws Interrupted when the program is to end.
  void advance(std::int32_t lines);

 private:
  Progress bar_;
  std::int64_t lines_;
  std::int64_t done_ = 0;
};
