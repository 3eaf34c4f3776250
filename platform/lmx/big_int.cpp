#include "lmx/big_int.h"

#include <string_view>

namespace lmx {

namespace {

struct number {
  bool negative;
  std::string_view digits;  // without leading zeros; empty for zero
};

number parse(std::string_view text) {
  bool negative = false;
  if (!text.empty() && (text[0] == '+' || text[0] == '-')) {
    negative = text[0] == '-';
    text.remove_prefix(1);
  }
  const auto first = text.find_first_not_of('0');
  text = first == std::string_view::npos ? std::string_view() : text.substr(first);
  return {negative && !text.empty(), text};
}

int compare_magnitudes(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return a.size() < b.size() ? -1 : 1;
  return a.compare(b);
}

int compare(std::string_view left, std::string_view right) {
  const number a = parse(left);
  const number b = parse(right);
  if (a.negative != b.negative) return a.negative ? -1 : 1;
  return a.negative ? compare_magnitudes(b.digits, a.digits)
                    : compare_magnitudes(a.digits, b.digits);
}

}  // namespace

bool operator>=(const std::string& value, const c_big_int& bound) {
  return compare(value, bound.digits()) >= 0;
}

bool operator<=(const std::string& value, const c_big_int& bound) {
  return compare(value, bound.digits()) <= 0;
}

}  // namespace lmx
