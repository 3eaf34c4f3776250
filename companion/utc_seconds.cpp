#include "companion/utc_seconds.h"

#include <charconv>
#include <chrono>
#include <string_view>

namespace companion {

double seconds_since_midnight(const lmx::c_datetime& time, const lmx::c_datetime& start) {
  const auto day = [](const lmx::c_datetime& of) {
    return std::chrono::sys_days(std::chrono::year(of.year) /
                                 std::chrono::month(static_cast<unsigned>(of.month)) /
                                 std::chrono::day(static_cast<unsigned>(of.day)));
  };
  // The class holds its seconds in single precision; its text has all digits.
  const std::string_view text = time.text();
  const std::string_view clock = text.substr(text.find('T') + 1);
  double seconds = 0;
  std::from_chars(clock.data() + 6, clock.data() + clock.size(), seconds);
  const auto days = static_cast<double>((day(time) - day(start)).count());
  return ((days * 24 + time.hour) * 60 + time.minute) * 60 + seconds;
}

}  // namespace companion
