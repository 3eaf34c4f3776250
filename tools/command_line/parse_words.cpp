#include "tools/command_line/parse_words.h"

#include <cstdlib>
#include <optional>
#include <string_view>
#include <vector>

#include "tools/command_line/suggestion.h"

namespace {

std::vector<std::string> verbs_of(const CLI::App& app) {
  std::vector<std::string> verbs;
  for (const CLI::App* verb : app.get_subcommands([](const CLI::App*) { return true; })) {
    verbs.push_back(verb->get_name());
  }
  return verbs;
}

std::vector<std::string> options_of(const CLI::App& app) {
  std::vector<std::string> names;
  for (const CLI::Option* option : app.get_options()) {
    for (const std::string& name : option->get_lnames()) names.push_back("--" + name);
  }
  return names;
}

// The verb that was given, or null.
const CLI::App* chosen_verb(const CLI::App& app) {
  const auto chosen = app.get_subcommands();
  return chosen.empty() ? nullptr : chosen.front();
}

// The text behind `lead`, where it begins so.
std::optional<std::string> behind(std::string_view text, std::string_view lead) {
  if (!text.starts_with(lead)) return std::nullopt;
  return std::string(text.substr(lead.size()));
}

// Why a text is no value of a numeric option, of which the parser tells only that it is none.
std::string why_no_number(const std::string& text) {
  char* end = nullptr;
  static_cast<void>(std::strtod(text.c_str(), &end));
  if (text.empty() || *end != '\0') return '"' + text + "\" is no number";
  const bool is_whole = text.find_first_not_of("+-0123456789") == std::string::npos;
  return '"' + text + (is_whole ? "\" is out of range" : "\" is no whole number");
}

// "NAME = VALUE" or "NAME = [VALUE,VALUE]", of which at least one cannot be converted.
std::string conversion_in_words(const std::string& fault) {
  const std::size_t middle = fault.find(" = ");
  if (middle == std::string::npos) return fault;
  const std::string name = fault.substr(0, middle);
  std::string values = fault.substr(middle + 3);
  if (values.starts_with('[') && values.ends_with(']')) {
    values = values.substr(1, values.size() - 2);
  }
  std::string reason;
  for (const std::string& value : CLI::detail::split(values, ',')) {
    const std::string why = why_no_number(value);
    if (reason.empty() || why.ends_with("is no number")) reason = why;
    if (why.ends_with("is no number")) break;
  }
  return name + ": " + reason;
}

// A word of the command line that nothing takes.
std::string surplus_in_words(const CLI::App& app, const CLI::App* verb, const std::string& word) {
  if (!word.starts_with('-')) return '"' + word + "\" is one argument too many";
  const std::string name = word.substr(0, word.find('='));
  if (verb != nullptr && app.get_option_no_throw(name) != nullptr) {
    return name + " stands before the verb: " + app.get_name() + ' ' + name + " ... " +
           verb->get_name() + " ...";
  }
  return "no option \"" + name + '"' + did_you_mean(name, options_of(verb ? *verb : app));
}

std::string replaced(std::string text, std::string_view old, std::string_view by) {
  const std::size_t at = text.find(old);
  return at == std::string::npos ? text : text.replace(at, old.size(), by);
}

std::string no_verb_in_words(const CLI::App& app, const CLI::ParseError& error) {
  const auto verbs = verbs_of(app);
  for (const std::string& word : app.remaining()) {
    if (word.starts_with('-')) continue;
    return "no verb \"" + word + '"' + did_you_mean(word, verbs);
  }
  if (!app.remaining().empty()) return surplus_in_words(app, nullptr, app.remaining().front());
  if (dynamic_cast<const CLI::RequiredError*>(&error) == nullptr) return error.what();
  std::string message = "a verb is missing; one of";
  for (const std::string& verb : verbs) message += ' ' + verb;
  return message;
}

// Of an option that got too few values, "NAME: ..." in the parser's words.
std::string missing_values_in_words(const CLI::App& scope, const std::string& fault) {
  const std::string name = fault.substr(0, fault.find(": "));
  const CLI::Option* option = scope.get_option_no_throw(name);
  if (option == nullptr || !fault.starts_with(name + ": ")) return fault;
  if (option->get_positional() && !option->nonpositional()) return name + ": not all are given";
  return name + ": " + option->get_type_name() + " must follow";
}

std::string in_words(const CLI::App& app, const CLI::App* verb, const CLI::ParseError& error) {
  std::string what = error.what();
  if (const auto fault = behind(what, "Could not convert: ")) return conversion_in_words(*fault);
  if (verb == nullptr && !verbs_of(app).empty()) return no_verb_in_words(app, error);
  const auto surplus = verb != nullptr ? verb->remaining() : app.remaining();
  if (!surplus.empty()) return surplus_in_words(app, verb, surplus.front());
  if (dynamic_cast<const CLI::RequiresError*>(&error) != nullptr) {
    return replaced(what, " requires ", " needs ");
  }
  if (dynamic_cast<const CLI::ExcludesError*>(&error) != nullptr) {
    return replaced(what, " excludes ", " and ") + " do not go together";
  }
  if (dynamic_cast<const CLI::ArgumentMismatch*>(&error) != nullptr) {
    return missing_values_in_words(verb != nullptr ? *verb : app, what);
  }
  return what;
}

}  // namespace

std::string wrong_use_in_words(const CLI::App& app, const std::string& what) {
  const CLI::App* verb = chosen_verb(app);
  const std::string lead = verb == nullptr ? "" : verb->get_name() + ": ";
  const std::string command = verb == nullptr ? "" : ' ' + verb->get_name();
  return lead + what + "\nSee `" + app.get_name() + command + " --help`.";
}

std::string wrong_use_in_words(const CLI::App& app, const CLI::ParseError& error) {
  return wrong_use_in_words(app, in_words(app, chosen_verb(app), error));
}
