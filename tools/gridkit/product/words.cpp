#include "tools/gridkit/product/words.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <string_view>
#include <utility>

std::string imaging_mode_in_words(const std::string& code) {
  constexpr std::array<std::pair<std::string_view, std::string_view>, 4> names = {
      {{"SM", "StripMap"},
       {"SC", "ScanSAR"},
       {"SL", "SpotLight"},
       {"HS", "high-resolution SpotLight"}}};
  for (const auto& [known, name] : names) {
    if (code == known) return std::string(name) + " (" + code + ')';
  }
  return code;
}

std::string time_in_words(std::string time) {
  std::replace(time.begin(), time.end(), 'T', ' ');
  if (!time.empty() && time.back() == 'Z') time.pop_back();
  return time;
}

std::string time_in_words(const lmx::c_datetime& time) {
  return time_in_words(std::string(time.text()));
}

std::string number_in_words(double value, int decimals) {
  constexpr std::size_t longest = 400;  // the largest double has 309 digits before the point
  std::array<char, longest> text{};
  const auto end = std::to_chars(text.data(), text.data() + text.size(), value,
                                 std::chars_format::fixed, decimals);
  const std::string_view digits(text.data(), static_cast<std::size_t>(end.ptr - text.data()));
  const bool is_zero = digits.find_first_not_of("-0.") == std::string_view::npos;
  return std::string(is_zero && digits.starts_with('-') ? digits.substr(1) : digits);
}

std::string shortest_number(double value) {
  constexpr std::size_t longest = 40;
  std::array<char, longest> text{};
  return {text.data(), std::to_chars(text.data(), text.data() + text.size(), value).ptr};
}
