#pragma once

#include <CLI/CLI.hpp>
#include <string>

// What is wrong with a command line, in the words of all three programs: "VERB: WHAT" and, on a
// line of its own, where help is. `error` is what parsing by `app` ended with.
std::string wrong_use_in_words(const CLI::App& app, const CLI::ParseError& error);

// The same for what was found after the parsing.
std::string wrong_use_in_words(const CLI::App& app, const std::string& what);
