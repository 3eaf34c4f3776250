#include "gridkit/records/dictionary_text.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <optional>
#include <system_error>
#include <utility>

#include "gridkit/error.h"

namespace gridkit {

namespace {

constexpr std::string_view first_line = "gridkit-dictionary 1";
constexpr std::string_view last_line = "end";
constexpr std::string_view design_word = "design";
constexpr std::string_view array_start = "double[";

std::string type_word(const RecordField& field) {
  switch (field.type) {
    case gkd_Enumeration:
      return "enum";
    case gkd_Character:
      return "char";
    case gkd_Integer:
      return "int";
    case gkd_Double:
      return "double";
    case gkd_DoubleArray:
      return std::string(array_start) + std::to_string(field.count) + "]";
    case gkd_DoubleVector:
      break;
  }
  return "double[*]";
}

// The count in "double[N]": a decimal number without leading zeros.
std::optional<std::int32_t> array_count(std::string_view word) {
  if (!word.starts_with(array_start) || !word.ends_with(']')) return {};
  word.remove_prefix(array_start.size());
  word.remove_suffix(1);
  std::int32_t count = 0;
  const char* end = word.data() + word.size();
  const auto [stop, fault] = std::from_chars(word.data(), end, count);
  if (word.empty() || word.front() == '0' || word.front() == '-' || fault != std::errc() ||
      stop != end) {
    return {};
  }
  return count;
}

// A field of the type that a word names, still without its name and items.
std::optional<RecordField> field_of(std::string_view word) {
  if (word == "enum") return RecordField{gkd_Enumeration, ""};
  if (word == "char") return RecordField{gkd_Character, ""};
  if (word == "int") return RecordField{gkd_Integer, ""};
  if (word == "double") return RecordField{gkd_Double, ""};
  if (word == "double[*]") return RecordField{gkd_DoubleVector, ""};
  if (const auto count = array_count(word)) return RecordField{gkd_DoubleArray, "", {}, *count};
  return {};
}

// Splits at each single blank, so that a blank too many makes an empty word.
std::vector<std::string_view> words_of(std::string_view line) {
  std::vector<std::string_view> words;
  for (;;) {
    const std::size_t blank = line.find(' ');
    words.push_back(line.substr(0, blank));
    if (blank == std::string_view::npos) return words;
    line.remove_prefix(blank + 1);
  }
}

class Parser {
 public:
  explicit Parser(std::string_view text) : rest_(text) {}

  std::vector<RecordDesign> parse() {
    try {
      if (next_line() != first_line) throw Error("expected " + quoted(first_line));
      for (std::string_view line = next_line(); line != last_line; line = next_line()) {
        take(words_of(line));
      }
      end_design();
    } catch (const Error& error) {
      throw Error("dictionary line " + std::to_string(line_) + ": " + error.what());
    }
    if (!rest_.empty()) {
      throw Error("dictionary line " + std::to_string(line_ + 1) + ": expected nothing after " +
                  quoted(last_line));
    }
    return std::move(designs_);
  }

 private:
  std::string_view next_line() {
    ++line_;
    const std::size_t end = rest_.find('\n');
    if (rest_.empty()) throw Error("the text stops before " + quoted(last_line));
    if (end == std::string_view::npos) throw Error("expected a line feed at the line's end");
    const std::string_view line = rest_.substr(0, end);
    if (line.ends_with('\r')) throw Error("expected a line feed alone, without carriage return");
    rest_.remove_prefix(end + 1);
    return line;
  }

  void take(const std::vector<std::string_view>& words) {
    if (words[0] == design_word) {
      begin_design(words);
      return;
    }
    std::optional<RecordField> field = field_of(words[0]);
    if (!field) throw Error("expected a field's type, \"design\" or \"end\"");
    if (designs_.empty()) throw Error("expected \"design\" before the first field");
    if (words.size() < 2) throw Error("expected a field's name after its type");
    if (field->type != gkd_Enumeration && words.size() > 2) {
      throw Error("expected nothing after the field's name");
    }
    field->name = words[1];
    field->items.assign(words.begin() + 2, words.end());
    add_field(designs_.back(), std::move(*field));
  }

  void begin_design(const std::vector<std::string_view>& words) {
    end_design();
    if (words.size() != 2) throw Error("expected one name after \"design\"");
    if (designs_.size() == most_designs) {
      throw Error("a dictionary has at most " + std::to_string(most_designs) + " designs");
    }
    if (std::ranges::find(designs_, words[1], &RecordDesign::name) != designs_.end()) {
      throw Error("there is a design " + quoted(words[1]) + " already");
    }
    designs_.push_back(make_design(words[1]));
  }

  void end_design() const {
    if (!designs_.empty() && designs_.back().fields.empty()) {
      throw Error("expected a field of the design " + quoted(designs_.back().name));
    }
  }

  std::string_view rest_;
  std::size_t line_ = 0;
  std::vector<RecordDesign> designs_;
};

}  // namespace

std::string dictionary_text(std::span<const RecordDesign* const> designs) {
  std::string text = std::string(first_line) + "\n";
  for (const RecordDesign* design : designs) {
    text += std::string(design_word) + " " + design->name + "\n";
    for (const RecordField& field : design->fields) {
      text += type_word(field) + " " + field.name;
      for (const std::string& item : field.items) text += " " + item;
      text += "\n";
    }
  }
  text += std::string(last_line) + "\n";
  if (text.size() > longest_dictionary) {
    throw Error("the text would have more than " + std::to_string(longest_dictionary) + " bytes");
  }
  return text;
}

std::vector<RecordDesign> parse_dictionary(std::string_view text) {
  if (text.size() > longest_dictionary) {
    throw Error("the dictionary has " + std::to_string(text.size()) + " bytes, at most " +
                std::to_string(longest_dictionary) + " are allowed");
  }
  return Parser(text).parse();
}

}  // namespace gridkit
