#pragma once

#include <string>

namespace lmx {

// An integer constant of any length, to compare value texts with.
class c_big_int {
 public:
  // `digits`: optional sign, decimal digits.
  explicit c_big_int(const char* digits) : digits_(digits) {}

  // The text it was made from.
  const std::string& digits() const { return digits_; }

 private:
  std::string digits_;
};

// Compares an integer text (optional sign, digits; see is_valid_integer) with the bound, whatever
// the length of either.
bool operator>=(const std::string& value, const c_big_int& bound);
bool operator<=(const std::string& value, const c_big_int& bound);

}  // namespace lmx
