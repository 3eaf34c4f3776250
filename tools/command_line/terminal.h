#pragma once

#include <string>

// How a program talks to somebody at a terminal.

enum class Style { bold, red, yellow };

// The text in that style where the stream is a terminal whose user has not set NO_COLOR; as it is
// elsewhere.
std::string on_output(const std::string& text, Style style);
std::string on_errors(const std::string& text, Style style);

// One line on standard error: "PROGRAM: MESSAGE", after all that standard output has so far.
void complain(const std::string& program, const std::string& message);

// The same for what is no reason to refuse: "PROGRAM: warning: MESSAGE".
void warn(const std::string& program, const std::string& message);
