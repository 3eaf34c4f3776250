#pragma once

#include <string>
#include <string_view>

namespace lmx {

// Splits a text at XML whitespace. Runs of whitespace yield no empty token. The text must outlive
// the tokeniser.
class c_xml_list_tokeniser {
 public:
  explicit c_xml_list_tokeniser(const std::string& text) : rest_(text) {}

  // True and *token for the next token, false at the end.
  bool get(std::string* token) {
    constexpr std::string_view blanks = " \t\r\n";
    const auto begin = rest_.find_first_not_of(blanks);
    if (begin == std::string_view::npos) return false;
    const auto size = rest_.substr(begin).find_first_of(blanks);
    *token = rest_.substr(begin, size);
    rest_.remove_prefix(begin + token->size());
    return true;
  }

 private:
  std::string_view rest_;
};

}  // namespace lmx
