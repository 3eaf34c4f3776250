#include "tools/command_line/help.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <set>

namespace {

constexpr std::size_t column = 30;

std::string joined(const std::vector<std::string>& words, const std::string& between) {
  std::string text;
  for (const std::string& word : words) text += (text.empty() ? "" : between) + word;
  return text;
}

std::string names_of(const std::set<CLI::Option*>& options) {
  std::vector<std::string> names;
  names.reserve(options.size());
  for (const CLI::Option* option : options) names.push_back(option->get_name());
  std::sort(names.begin(), names.end());
  return joined(names, ", ");
}

class Help : public CLI::Formatter {
 public:
  std::string make_option(const CLI::Option* option, bool is_positional) const override {
    std::string text = "  " + make_option_name(option, is_positional);
    if (!is_positional) text += make_option_opts(option);
    // Two spaces at least tell the values' names from the description.
    if (text.size() + 2 > column) {
      text += '\n' + std::string(column, ' ');
    } else {
      text.resize(column, ' ');
    }
    return text + make_option_desc(option) + '\n';
  }

  std::string make_option_opts(const CLI::Option* option) const override {
    return option->get_type_size() == 0 ? "" : ' ' + option->get_type_name();
  }

  std::string make_option_desc(const CLI::Option* option) const override {
    std::string text = option->get_description();
    if (!option->get_default_str().empty()) text += "; default " + option->get_default_str();
    if (!option->get_needs().empty()) text += "; needs " + names_of(option->get_needs());
    if (!option->get_excludes().empty()) text += "; not with " + names_of(option->get_excludes());
    return text;
  }

  std::string make_option_usage(const CLI::Option* option) const override {
    std::string name = option->get_name(true);
    if (option->get_expected_max() >= CLI::detail::expected_max_vector_size) name += "...";
    return option->get_required() ? name : '[' + name + ']';
  }
};

std::string lower(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(), [](char c) {
    return static_cast<char>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c);
  });
  return text;
}

}  // namespace

void shape_help(CLI::App& app) {
  const auto help = std::make_shared<Help>();
  help->column_width(column);
  help->label("SUBCOMMAND", "VERB");
  app.formatter(help);
  app.set_help_flag("-h,--help", "Show this help");
}

void head_verbs(CLI::App& app) {
  for (CLI::App* verb : app.get_subcommands([](const CLI::App*) { return true; })) {
    verb->group("Verbs");
  }
}

void take_one_of(CLI::Option* option, const std::vector<std::string>& words) {
  take_one_of(option, words, words);
}

void take_one_of(CLI::Option* option, const std::vector<std::string>& words,
                 const std::vector<std::string>& meanings) {
  option->type_name(joined(words, "|"));
  option->transform(CLI::Validator(
      [words, meanings](std::string& given) -> std::string {
        for (std::size_t i = 0; i < words.size(); ++i) {
          if (lower(words[i]) != lower(given)) continue;
          given = meanings[i];
          return {};
        }
        return '"' + given + "\" is none of " + joined(words, ", ");
      },
      ""));
}
