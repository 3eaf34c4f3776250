#pragma once

#include <CLI/CLI.hpp>
#include <functional>

// What the three programs have in common from their command line to their exit status.

// For an app without sub-commands so far: the help's shape (see help.h), --help, and --version,
// which prints one line: the program's name and version, and in brackets those of the libraries in
// use.
void begin_program(CLI::App& app);

// Parses the command line and does what it asks for, which `action` does once the parsing is over
// and whose status it gives. A command line that is not understood, and WrongUse, are told on
// standard error with the place of help, and give exit_wrong_use. Throws what `action` throws else,
// and gridkit::Error for output that does not arrive.
int run_program(CLI::App& app, int argc, char** argv, const std::function<int()>& action);

// For the outermost handler: tells the exception at hand on standard error, led by the program's
// name, and gives exit_refused. Of a gridkit::Error the sentence is told, not the calls behind it.
int tell_refusal(const char* program) noexcept;
