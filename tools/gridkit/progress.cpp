#include "tools/gridkit/progress.h"

#include "tools/gridkit/interruption.h"

void LineProgress::advance(std::int32_t lines) {
  stop_if_interrupted();
  done_ += lines;
  bar_.show(static_cast<double>(done_) / static_cast<double>(lines_));
}
