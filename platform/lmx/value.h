#pragma once

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <optional>
#include <string>

#include "lmx/big_int.h"
#include "lmx/datetime.h"

// Checks and conversions of value texts, and values as XML text. None depends on the locale.

namespace lmx {

// Stores the text in the string form that the classes hold, which is UTF-8.
inline std::string& vtostring(std::string& destination, const std::string& source) {
  return destination = source;
}

// Strips blanks at both ends and reduces inner runs to one blank.
void collapse(std::string& text);

// True when the value has at most `maximum` characters (not bytes).
bool is_max_length_ok(const std::string& value, std::size_t maximum);

// The lexical forms of XML Schema: optional sign and digits; decimal or scientific notation and
// INF, -INF, NaN; true, false, 1, 0.
bool is_valid_integer(const std::string& text);
bool is_valid_float(const std::string& text);
bool is_valid_bool(const std::string& text);

// 0.0 as a function result, so that a division by it is not folded at build time.
double float_zero();

// Conversions of valid texts. What follows a number is ignored, as is a text that is none.
std::int32_t to_int32(const std::string& text);
std::uint32_t to_uint32(const std::string& text);
std::int64_t to_int64(const std::string& text);
std::uint64_t to_uint64(const std::string& text);
std::uint8_t to_uint8(const std::string& text);  // low 8 bits of the number
double to_double(const std::string& text);       // beyond the range: infinity or zero
// is_valid_float and to_double in one: nothing for a text that is not valid.
std::optional<double> to_valid_double(const std::string& text);
bool to_bool(const std::string& text);  // true for "true" and "1"

// A value to be written as XML text: strings with markup, line breaks and tabs escaped, so that
// they read back equal from an element and from an attribute; numbers as the shortest text that
// reads back to the bit.
template <class T>
class c_as_xml {
 public:
  explicit c_as_xml(const T& value) : value_(&value) {}
  const T& value() const { return *value_; }

 private:
  const T* value_;
};

std::ostream& operator<<(std::ostream& stream, const c_as_xml<std::string>& text);
std::ostream& operator<<(std::ostream& stream, const c_as_xml<double>& number);
std::ostream& operator<<(std::ostream& stream, const c_as_xml<float>& number);
std::ostream& operator<<(std::ostream& stream, const c_as_xml<bool>& flag);

}  // namespace lmx
