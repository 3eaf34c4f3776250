#include "tools/gridkit/progress.h"

#include <cstdio>
#include <string>

#include <unistd.h>

Progress::Progress(std::int32_t lines, bool quiet)
    : lines_(lines), shown_(!quiet && ::isatty(STDERR_FILENO) != 0) {}

Progress::~Progress() {
  if (shown_) std::fputc('\n', stderr);
}

void Progress::advance(std::int32_t lines) {
  done_ += lines;
  if (!shown_) return;
  constexpr int width = 40;
  const auto filled = static_cast<int>(std::int64_t{done_} * width / lines_);
  const auto percent = static_cast<int>(std::int64_t{done_} * 100 / lines_);
  const std::string bar(static_cast<std::size_t>(filled), '#');
  std::fprintf(stderr, "\r[%-*s] %3d%%", width, bar.c_str(), percent);
}
