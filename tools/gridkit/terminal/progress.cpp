#include "tools/gridkit/terminal/progress.h"

#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <string>

#include "tools/gridkit/terminal/interruption.h"

Progress::Progress(std::int64_t lines, bool quiet, double share_of_lines)
    : shown_(!quiet && ::isatty(STDERR_FILENO) != 0),
      lines_(lines),
      share_of_lines_(share_of_lines) {}

void Progress::advance(std::int32_t lines) {
  stop_if_interrupted();
  lines_done_ += lines;
  show(share_of_lines_ * static_cast<double>(lines_done_) / static_cast<double>(lines_));
}

bool Progress::follow(double done) {
  show(share_of_lines_ + (1 - share_of_lines_) * done);
  return !is_interrupted();
}

void Progress::clear() {
  if (percent_ >= 0) std::fputs("\r\033[K", stderr);
  percent_ = -1;
}

void Progress::show(double done) {
  const auto percent = static_cast<int>(100 * std::clamp(done, 0.0, 1.0));
  if (!shown_ || percent == percent_) return;
  percent_ = percent;
  constexpr int width = 40;
  const std::string bar(static_cast<std::size_t>(percent * width / 100), '#');
  std::fprintf(stderr, "\r[%-*s] %3d%%", width, bar.c_str(), percent);
  std::fflush(stderr);
}
