#include "tools/gridkit/product/words.h"

#include <algorithm>
#include <array>
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

std::string time_in_words(const lmx::c_datetime& time) {
  std::string text(time.text());
  std::replace(text.begin(), text.end(), 'T', ' ');
  if (!text.empty() && text.back() == 'Z') text.pop_back();
  return text;
}
