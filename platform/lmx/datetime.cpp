#include "lmx/datetime.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <optional>
#include <ostream>

namespace lmx {

namespace {

struct Parts {
  int year, month, day, hour, minute;
  std::string_view seconds;  // two digits and the fraction
  std::size_t fraction_end;  // index after the seconds in the text
};

// A cursor over the text; every step tells whether the form still holds.
class Cursor {
 public:
  explicit Cursor(std::string_view text) : rest_(text) {}

  bool accept(char c) {
    if (rest_.empty() || rest_[0] != c) return false;
    rest_.remove_prefix(1);
    return true;
  }

  // `least` digits or more, up to `most`, as a number.
  std::optional<int> digits(std::size_t least, std::size_t most) {
    std::size_t count = 0;
    while (count < rest_.size() && rest_[count] >= '0' && rest_[count] <= '9') ++count;
    if (count < least || count > most) return std::nullopt;
    int value = 0;
    std::from_chars(rest_.data(), rest_.data() + count, value);
    rest_.remove_prefix(count);
    return value;
  }

  bool skip_digits() {
    const auto count = std::min(rest_.find_first_not_of("0123456789"), rest_.size());
    rest_.remove_prefix(count);
    return count > 0;
  }

  std::string_view rest() const { return rest_; }

 private:
  std::string_view rest_;
};

bool is_leap(int year) {
  return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
}

int days_in(int year, int month) {
  constexpr int days[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  return month == 2 && is_leap(year) ? 29 : days[month - 1];
}

bool between(std::optional<int> value, int low, int high) {
  return value && *value >= low && *value <= high;
}

bool accept_zone(Cursor& c) {
  if (c.rest().empty() || c.accept('Z')) return true;
  if (!c.accept('+') && !c.accept('-')) return false;
  const auto hours = c.digits(2, 2);
  if (!between(hours, 0, 14) || !c.accept(':')) return false;
  return between(c.digits(2, 2), 0, *hours == 14 ? 0 : 59);
}

std::optional<Parts> parse(std::string_view text) {
  Cursor c(text);
  const bool negative = c.accept('-');
  const bool padded = !c.rest().empty() && c.rest()[0] == '0';
  const auto year = c.digits(4, padded ? 4 : 9);
  if (!year || *year == 0 || !c.accept('-')) return std::nullopt;
  const auto month = c.digits(2, 2);
  if (!between(month, 1, 12) || !c.accept('-')) return std::nullopt;
  const auto day = c.digits(2, 2);
  if (!between(day, 1, days_in(*year, *month)) || !c.accept('T')) return std::nullopt;
  const auto hour = c.digits(2, 2);
  if (!between(hour, 0, 24) || !c.accept(':')) return std::nullopt;
  const auto minute = c.digits(2, 2);
  if (!between(minute, 0, 59) || !c.accept(':')) return std::nullopt;
  const std::string_view from_seconds = c.rest();
  if (!between(c.digits(2, 2), 0, 59)) return std::nullopt;
  if (c.accept('.') && !c.skip_digits()) return std::nullopt;
  const std::string_view seconds = from_seconds.substr(0, from_seconds.size() - c.rest().size());
  const std::size_t fraction_end = text.size() - c.rest().size();
  if (!accept_zone(c) || !c.rest().empty()) return std::nullopt;
  const bool on_the_hour =
      *minute == 0 && seconds.find_first_not_of("0.") == std::string_view::npos;
  if (*hour == 24 && !on_the_hour) return std::nullopt;
  return Parts{negative ? -*year : *year, *month, *day, *hour, *minute, seconds, fraction_end};
}

}  // namespace

bool c_datetime::is_valid(const std::string& text) {
  return parse(text).has_value();
}

c_datetime& c_datetime::operator=(const std::string& text) {
  *this = c_datetime();
  const auto read = parse(text);
  if (!read) return *this;
  year = read->year;
  month = read->month;
  day = read->day;
  hour = read->hour;
  minute = read->minute;
  double exact = 0;
  std::from_chars(read->seconds.data(), read->seconds.data() + read->seconds.size(), exact);
  seconds = static_cast<float>(exact);
  const std::string_view zone = std::string_view(text).substr(read->fraction_end);
  const std::size_t kept = std::min(read->fraction_end, text_.size() - zone.size());
  std::copy_n(text.data(), kept, text_.data());
  std::copy_n(zone.data(), zone.size(), text_.data() + kept);
  size_ = static_cast<unsigned char>(kept + zone.size());
  return *this;
}

std::ostream& operator<<(std::ostream& stream, const c_datetime& value) {
  return stream << value.text();
}

}  // namespace lmx
