#pragma once

#include <array>
#include <iosfwd>
#include <string>
#include <string_view>

#include "lmx/export.h"

namespace lmx {

// A date and time as annotations write it: XML Schema dateTime,
// [-]YYYY-MM-DDThh:mm:ss[.fraction][Z|+hh:mm|-hh:mm]. Trivially copyable. An empty value has all
// parts zero and writes as nothing.
class LMX_API c_datetime {
 public:
  int year = 0;
  int month = 0;  // from 1
  int day = 0;    // from 1
  int hour = 0;   // 0 to 24
  int minute = 0;
  float seconds = 0;  // single precision, fraction included; no leap second

  // Whether the text has the lexical form, with a day that the month has in that year. 24 stands
  // for the hour only with no minutes and seconds. Years of more than nine digits are refused.
  static bool is_valid(const std::string& text);

  // Takes the lexical form; an invalid text leaves an empty value. Fractions beyond some thirty
  // digits are cut.
  c_datetime& operator=(const std::string& text);

  // The lexical form as it was taken.
  std::string_view text() const { return {text_.data(), size_}; }

  friend bool operator==(const c_datetime& a, const c_datetime& b) { return a.text() == b.text(); }

 private:
  std::array<char, 56> text_{};
  unsigned char size_ = 0;
};

// Writes the lexical form.
LMX_API std::ostream& operator<<(std::ostream& stream, const c_datetime& value);

}  // namespace lmx
