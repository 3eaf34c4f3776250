#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace lmx {

// An integer constant of any length, to compare value texts with.
class c_big_int {
 public:
  // `digits`: optional sign, decimal digits.
  explicit c_big_int(const char* digits);

  // The text it was made from.
  const std::string& digits() const { return digits_; }

  // -1, 0 or 1 as an integer text is below, equal to or above the constant.
  int compared_with(std::string_view value) const;

 private:
  std::string digits_;
  bool negative_;
  std::size_t first_;  // of digits_, after the sign and leading zeros
};

// Compares an integer text (optional sign, digits; see is_valid_integer) with the bound, whatever
// the length of either.
bool operator>=(const std::string& value, const c_big_int& bound);
bool operator<=(const std::string& value, const c_big_int& bound);

}  // namespace lmx
