#include "tools/gridkit/report/html.h"

#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <stdexcept>

namespace report {

namespace {

constexpr std::string_view replacement = "\xEF\xBF\xBD";  // U+FFFD

// Bytes of the UTF-8 character that the text begins with; 0 where it begins with none.
std::size_t character_length(std::string_view text) {
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const unsigned lead = byte(0);
  const std::size_t length = lead < 0x80   ? 1
                             : lead < 0xC2 ? 0
                             : lead < 0xE0 ? 2
                             : lead < 0xF0 ? 3
                             : lead < 0xF5 ? 4
                                           : 0;
  if (length == 0 || length > text.size()) return 0;
  for (std::size_t i = 1; i < length; ++i) {
    if ((byte(i) & 0xC0U) != 0x80U) return 0;
  }
  if (length < 3) return length;
  const unsigned second = byte(1);
  const bool overlong = (lead == 0xE0 && second < 0xA0) || (lead == 0xF0 && second < 0x90);
  const bool surrogate = lead == 0xED && second >= 0xA0;
  const bool beyond = lead == 0xF4 && second >= 0x90;
  return overlong || surrogate || beyond ? 0 : length;
}

std::string_view escaped(char c) {
  switch (c) {
    case '&':
      return "&amp;";
    case '<':
      return "&lt;";
    case '>':
      return "&gt;";
    case '"':
      return "&quot;";
    case '\'':
      return "&#39;";
    default:
      return {};
  }
}

bool is_control(char c) {
  const auto byte = static_cast<unsigned char>(c);
  return (byte < 0x20 && c != '\n' && c != '\t') || byte == 0x7F;
}

}  // namespace

std::string escape(std::string_view text) {
  std::string result;
  result.reserve(text.size());
  while (!text.empty()) {
    const std::size_t length = character_length(text);
    if (length == 0 || is_control(text.front())) {
      result += replacement;
      text.remove_prefix(1);
      continue;
    }
    const std::string_view special = escaped(text.front());
    result += special.empty() ? text.substr(0, length) : special;
    text.remove_prefix(length);
  }
  return result;
}

std::string base64(std::span<const std::byte> bytes) {
  constexpr std::string_view digits =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text;
  text.reserve((bytes.size() + 2) / 3 * 4);
  for (std::size_t i = 0; i < bytes.size(); i += 3) {
    const std::size_t count = std::min<std::size_t>(3, bytes.size() - i);
    std::uint32_t group = 0;
    for (std::size_t k = 0; k < 3; ++k) {
      group = (group << 8U) | (k < count ? std::to_integer<std::uint32_t>(bytes[i + k]) : 0);
    }
    for (std::size_t k = 0; k < 4; ++k) {
      text += k <= count ? digits[(group >> (18 - 6 * k)) & 63U] : '=';
    }
  }
  return text;
}

std::string fill(std::string_view page,
                 std::initializer_list<std::pair<std::string_view, std::string_view>> values) {
  std::string result;
  for (;;) {
    const std::size_t open = page.find("{{");
    result += page.substr(0, open);
    if (open == std::string_view::npos) return result;
    const std::size_t close = page.find("}}", open);
    if (close == std::string_view::npos) throw std::logic_error("a template's name has no end");
    const std::string_view name = page.substr(open + 2, close - open - 2);
    bool found = false;
    for (const auto& [key, value] : values) {
      if (key != name) continue;
      result += value;
      found = true;
    }
    if (!found) throw std::logic_error("a template's name has no value: " + std::string(name));
    page.remove_prefix(close + 2);
  }
}

std::string number(double value, int digits) {
  std::array<char, 64> text{};
  std::snprintf(text.data(), text.size(), "%.*g", digits, value);
  return text.data();
}

std::string fixed(double value, int decimals) {
  std::array<char, 400> text{};
  std::snprintf(text.data(), text.size(), "%.*f", decimals, value);
  // A value that rounds to nothing keeps no sign.
  const std::string result = text.data();
  return result.find_first_not_of("-0.") == std::string::npos && result.front() == '-'
             ? result.substr(1)
             : result;
}

}  // namespace report
