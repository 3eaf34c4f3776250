#include "lmx/value.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <optional>
#include <ostream>
#include <string_view>

#include <locale.h>
#include <stdlib.h>

namespace lmx {

namespace {

bool is_blank(char c) {
  return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}
bool is_digit(char c) {
  return c >= '0' && c <= '9';
}

std::string_view skip_digits(std::string_view text, std::size_t* count) {
  const auto end = std::find_if_not(text.begin(), text.end(), is_digit);
  *count = static_cast<std::size_t>(end - text.begin());
  return text.substr(*count);
}

std::string_view skip_sign(std::string_view text) {
  if (!text.empty() && (text[0] == '+' || text[0] == '-')) text.remove_prefix(1);
  return text;
}

struct Magnitude {
  bool negative;
  std::uint64_t value;  // the largest number when the digits go beyond it
};

Magnitude parse_integer(std::string_view text) {
  while (!text.empty() && is_blank(text[0])) text.remove_prefix(1);
  const bool negative = !text.empty() && text[0] == '-';
  text = skip_sign(text);
  std::uint64_t value = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
  if (result.ec == std::errc::result_out_of_range) value = UINT64_MAX;
  return {negative, value};
}

// atof in the locale "C", whatever the process's is; for the rare numbers that from_chars does not
// take.
double convert_by_library(const char* text) {
  static const locale_t plain = ::newlocale(LC_ALL_MASK, "C", nullptr);
  return ::strtod_l(text, nullptr, plain);
}

using NumberText = std::array<char, 32>;

// Texts of finite numbers: the shortest that read back to the bit.
std::string_view shortest_text(double number, NumberText& room) {
  const char* const end = std::to_chars(room.data(), room.data() + room.size(), number).ptr;
  return {room.data(), static_cast<std::size_t>(end - room.data())};
}

std::string_view shortest_text(float number, NumberText& room) {
  const char* end = std::to_chars(room.data(), room.data() + room.size(), number).ptr;
  // A float is read as a double that is then narrowed, so it is rounded twice. The shortest text of
  // a few floats lies so near the middle between two of them that the first rounding goes there.
  // Nine digits are so near the float itself that it does not matter.
  double read = 0;
  std::from_chars(room.data(), end, read);
  if (static_cast<float>(read) != number) {
    end = std::to_chars(room.data(), room.data() + room.size(), number,
                        std::chars_format::scientific, 8)
              .ptr;
  }
  return {room.data(), static_cast<std::size_t>(end - room.data())};
}

template <class T>
std::ostream& write_number(std::ostream& stream, T number) {
  if (std::isnan(number)) return stream << "NaN";
  if (std::isinf(number)) return stream << (number > 0 ? "INF" : "-INF");
  NumberText room;
  return stream << shortest_text(number, room);
}

std::string_view escape_of(char c) {
  switch (c) {
    case '&':
      return "&amp;";
    case '<':
      return "&lt;";
    case '>':
      return "&gt;";
    case '"':
      return "&quot;";
    case '\t':
      return "&#9;";
    case '\n':
      return "&#10;";
    case '\r':
      return "&#13;";
    default:
      return {};
  }
}

}  // namespace

void collapse(std::string& text) {
  // Mostly there is nothing to do; blanks are among the characters up to ' '.
  const auto may_be_blank = [](char c) { return static_cast<unsigned char>(c) <= ' '; };
  if (std::none_of(text.begin(), text.end(), may_be_blank)) return;
  std::size_t kept = 0;
  for (const char c : text) {
    if (!is_blank(c)) {
      text[kept++] = c;
    } else if (kept > 0 && text[kept - 1] != ' ') {
      text[kept++] = ' ';
    }
  }
  if (kept > 0 && text[kept - 1] == ' ') --kept;
  text.resize(kept);
}

bool is_max_length_ok(const std::string& value, std::size_t maximum) {
  if (value.size() <= maximum) return true;
  const auto characters = std::count_if(value.begin(), value.end(), [](char c) {
    return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U;
  });
  return static_cast<std::size_t>(characters) <= maximum;
}

bool is_valid_integer(const std::string& text) {
  std::size_t digits = 0;
  return skip_digits(skip_sign(text), &digits).empty() && digits > 0;
}

bool is_valid_float(const std::string& text) {
  if (text == "INF" || text == "-INF" || text == "NaN") return true;
  std::size_t whole = 0;
  std::size_t fraction = 0;
  std::string_view rest = skip_digits(skip_sign(text), &whole);
  if (!rest.empty() && rest[0] == '.') rest = skip_digits(rest.substr(1), &fraction);
  if (whole + fraction == 0) return false;
  if (rest.empty()) return true;
  if (rest[0] != 'e' && rest[0] != 'E') return false;
  std::size_t exponent = 0;
  return skip_digits(skip_sign(rest.substr(1)), &exponent).empty() && exponent > 0;
}

bool is_valid_bool(const std::string& text) {
  return text == "true" || text == "false" || text == "1" || text == "0";
}

double float_zero() {
  return 0.0;
}

std::int64_t to_int64(const std::string& text) {
  const Magnitude number = parse_integer(text);
  return static_cast<std::int64_t>(number.negative ? 0 - number.value : number.value);
}

std::uint64_t to_uint64(const std::string& text) {
  const Magnitude number = parse_integer(text);
  return number.negative ? 0 - number.value : number.value;
}

std::int32_t to_int32(const std::string& text) {
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(to_uint64(text)));
}

std::uint32_t to_uint32(const std::string& text) {
  return static_cast<std::uint32_t>(to_uint64(text));
}

std::uint8_t to_uint8(const std::string& text) {
  return static_cast<std::uint8_t>(to_uint64(text));
}

double to_double(const std::string& text) {
  if (text == "NaN") return float_zero() / float_zero();
  if (text == "INF") return 1 / float_zero();
  if (text == "-INF") return -1 / float_zero();
  const char* first = text.c_str();
  if (*first == '+') ++first;
  double value = 0;
  const auto result = std::from_chars(first, text.c_str() + text.size(), value);
  return result.ec == std::errc() ? value : convert_by_library(text.c_str());
}

std::optional<double> to_valid_double(const std::string& text) {
  // from_chars also takes "inf", "nan(1)" and the like; of what it takes whole, only the forms that
  // XML Schema has too end so.
  const char* const end = text.data() + text.size();
  double value = 0;
  const auto result = std::from_chars(text.data(), end, value);
  if (result.ec == std::errc() && result.ptr == end && (is_digit(end[-1]) || end[-1] == '.')) {
    return value;
  }
  if (!is_valid_float(text)) return std::nullopt;
  return to_double(text);
}

bool to_bool(const std::string& text) {
  return text == "true" || text == "1";
}

std::ostream& operator<<(std::ostream& stream, const c_as_xml<std::string>& text) {
  std::string_view rest = text.value();
  while (!rest.empty()) {
    const auto special =
        std::find_if(rest.begin(), rest.end(), [](char c) { return !escape_of(c).empty(); });
    const auto plain = static_cast<std::size_t>(special - rest.begin());
    stream << rest.substr(0, plain);
    if (special == rest.end()) break;
    stream << escape_of(*special);
    rest.remove_prefix(plain + 1);
  }
  return stream;
}

std::ostream& operator<<(std::ostream& stream, const c_as_xml<double>& number) {
  return write_number(stream, number.value());
}

std::ostream& operator<<(std::ostream& stream, const c_as_xml<float>& number) {
  return write_number(stream, number.value());
}

std::ostream& operator<<(std::ostream& stream, const c_as_xml<bool>& flag) {
  return stream << (flag.value() ? "true" : "false");
}

}  // namespace lmx
