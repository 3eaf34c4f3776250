#pragma once

#include <string>

// How a command talks to somebody at a terminal.

enum class Style { bold, red, yellow };

// The text in that style where the stream is a terminal whose user has not set NO_COLOR; as it is
// elsewhere.
std::string on_output(const std::string& text, Style style);
std::string on_errors(const std::string& text, Style style);

// One line on standard error: "gridkit: warning: MESSAGE".
void warn(const std::string& message);
