#include "tools/gridkit/terminal.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <iostream>

namespace {

bool is_coloured(int file) {
  const char* no_colour = std::getenv("NO_COLOR");
  const char* terminal = std::getenv("TERM");
  const bool refused = (no_colour != nullptr && *no_colour != '\0') ||
                       (terminal != nullptr && std::string(terminal) == "dumb");
  return !refused && ::isatty(file) != 0;
}

std::string styled(const std::string& text, Style style, int file) {
  if (!is_coloured(file)) return text;
  const char* code = style == Style::bold ? "1" : style == Style::red ? "1;31" : "1;33";
  return std::string("\033[") + code + 'm' + text + "\033[0m";
}

}  // namespace

std::string on_output(const std::string& text, Style style) {
  return styled(text, style, STDOUT_FILENO);
}

std::string on_errors(const std::string& text, Style style) {
  return styled(text, style, STDERR_FILENO);
}

void warn(const std::string& message) {
  std::cerr << "gridkit: " << on_errors("warning:", Style::yellow) << ' ' << message << '\n';
}

Progress::Progress(bool quiet) : shown_(!quiet && ::isatty(STDERR_FILENO) != 0) {}

void Progress::show(double done) {
  const auto percent = static_cast<int>(100 * std::clamp(done, 0.0, 1.0));
  if (!shown_ || percent == percent_) return;
  percent_ = percent;
  constexpr int width = 40;
  const std::string bar(static_cast<std::size_t>(percent * width / 100), '#');
  std::fprintf(stderr, "\r[%-*s] %3d%%", width, bar.c_str(), percent);
  std::fflush(stderr);
}

void Progress::clear() {
  if (percent_ >= 0) std::fputs("\r\033[K", stderr);
  percent_ = -1;
}
