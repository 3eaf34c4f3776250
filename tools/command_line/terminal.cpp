#include "tools/command_line/terminal.h"

#include <unistd.h>

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

void complain(const std::string& program, const std::string& message) {
  std::cout.flush();
  std::cerr << on_errors(program + ':', Style::red) << ' ' << message << '\n';
}

void warn(const std::string& program, const std::string& message) {
  std::cout.flush();
  std::cerr << program << ": " << on_errors("warning:", Style::yellow) << ' ' << message << '\n';
}
