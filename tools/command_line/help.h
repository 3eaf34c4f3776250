#pragma once

#include <CLI/CLI.hpp>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

// How the help of the programs reads. An option shows its values by their names: `--size PIXELS`,
// `--block ROW COLUMN`, or by those to choose from: `--look right|left`. So the words behind an
// option are as many as its values. Its default, and what it goes with, stand in its description.
// The shells' completions read this.

// For an app without sub-commands so far: those added later read alike.
void shape_help(CLI::App& app);

// Heads the sub-commands, once all are added.
void head_verbs(CLI::App& app);

// The option takes one of the words, in upper or lower case.
void take_one_of(CLI::Option* option, const std::vector<std::string>& words);

// What it gets for each word is another text.
void take_one_of(CLI::Option* option, const std::vector<std::string>& words,
                 const std::vector<std::string>& meanings);

// The same for words that stand for enumerators.
template <class Value>
void take_one_of(CLI::Option* option, const std::vector<std::pair<std::string, Value>>& words) {
  std::vector<std::string> names;
  std::vector<std::string> numbers;
  for (const auto& [name, value] : words) {
    names.push_back(name);
    numbers.push_back(std::to_string(static_cast<int>(value)));
  }
  take_one_of(option, names, numbers);
}

// The option takes a number of the range, both ends included; `name` is what it is called. What is
// no number is told by the conversion (see parse_words.h).
template <class Number>
void take_range(CLI::Option* option, const std::string& name, Number least, Number most) {
  option->type_name(name)->check(CLI::Validator(
      [least, most](const std::string& given) -> std::string {
        Number number{};
        if (!CLI::detail::lexical_cast(given, number) || (number >= least && number <= most)) {
          return {};
        }
        std::ostringstream text;
        text << '"' << given << "\" is not within " << least << " to " << most;
        return text.str();
      },
      ""));
}
