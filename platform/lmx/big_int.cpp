#include "lmx/big_int.h"

#include <string_view>

namespace lmx {

namespace {

struct Number {
  bool negative;
  std::string_view digits;  // without leading zeros; empty for zero
};

Number parse(std::string_view text) {
  bool negative = false;
  if (!text.empty() && (text[0] == '+' || text[0] == '-')) {
    negative = text[0] == '-';
    text.remove_prefix(1);
  }
  while (!text.empty() && text[0] == '0') text.remove_prefix(1);
  return {negative && !text.empty(), text};
}

int compare_magnitudes(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return a.size() < b.size() ? -1 : 1;
  return a.compare(b);
}

}  // namespace

c_big_int::c_big_int(const char* digits) : digits_(digits) {
  const Number parsed = parse(digits_);
  negative_ = parsed.negative;
  first_ = digits_.size() - parsed.digits.size();
}

int c_big_int::compared_with(std::string_view value) const {
  const Number a = parse(value);
  const std::string_view digits = std::string_view(digits_).substr(first_);
  if (a.negative != negative_) return a.negative ? -1 : 1;
  return a.negative ? compare_magnitudes(digits, a.digits) : compare_magnitudes(a.digits, digits);
}

bool operator>=(const std::string& value, const c_big_int& bound) {
  return bound.compared_with(value) >= 0;
}

bool operator<=(const std::string& value, const c_big_int& bound) {
  return bound.compared_with(value) <= 0;
}

}  // namespace lmx
