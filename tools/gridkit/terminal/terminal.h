#pragma once

#include <string>

#include "tools/command_line/terminal.h"

// One line on standard error: "gridkit: warning: MESSAGE".
inline void warn(const std::string& message) {
  warn("gridkit", message);
}
