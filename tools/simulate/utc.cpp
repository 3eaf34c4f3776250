#include "tools/simulate/utc.h"

#include <array>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <stdexcept>

namespace simulate {

namespace {

constexpr std::int64_t million = 1000000;
constexpr std::int64_t day_seconds = 86400;

struct LeapSecond {
  int year;
  unsigned month;
  int gps_minus_utc;  // from the first of that month on
};
// International Earth Rotation Service, Bulletin C.
constexpr LeapSecond leap_seconds[] = {{1980, 1, 0},  {1999, 1, 13}, {2006, 1, 14}, {2009, 1, 15},
                                       {2012, 7, 16}, {2015, 7, 17}, {2017, 1, 18}};

std::int64_t days_to(int year, unsigned month, unsigned day) {
  using namespace std::chrono;
  const sys_days date =
      year_month_day(std::chrono::year(year), std::chrono::month(month), std::chrono::day(day));
  return date.time_since_epoch().count();
}

std::int64_t floor_div(std::int64_t a, std::int64_t b) {
  return a / b - (a % b < 0 ? 1 : 0);
}

// The last entry at or before an instant; the first one for those before all.
const LeapSecond& leap_second_at(std::int64_t microseconds) {
  const std::int64_t days = floor_div(microseconds, day_seconds * million);
  const LeapSecond* last = &leap_seconds[0];
  for (const LeapSecond& entry : leap_seconds) {
    if (days >= days_to(entry.year, entry.month, 1)) last = &entry;
  }
  return *last;
}

}  // namespace

Utc Utc::parse(const std::string& text) {
  int year = 0;
  unsigned month = 0;
  unsigned day = 0;
  int hour = 0;
  int minute = 0;
  double second = 0;
  int used = 0;
  const int got = std::sscanf(text.c_str(), "%4d-%2u-%2uT%2d:%2d:%lf%n", &year, &month, &day, &hour,
                              &minute, &second, &used);
  const std::string rest = got == 6 ? text.substr(static_cast<std::size_t>(used)) : "?";
  const bool valid = got == 6 && (rest.empty() || rest == "Z") && month >= 1 && month <= 12 &&
                     day >= 1 && day <= 31 && hour >= 0 && hour < 24 && minute >= 0 &&
                     minute < 60 && second >= 0 && second < 60;
  if (!valid) throw std::invalid_argument("not a UTC time such as 2008-03-10T13:32:20: " + text);
  Utc utc;
  utc.microseconds_ = ((days_to(year, month, day) * 24 + hour) * 60 + minute) * 60 * million +
                      std::llround(second * 1e6);
  return utc;
}

Utc Utc::after(double seconds) const {
  Utc later;
  later.microseconds_ = microseconds_ + std::llround(seconds * 1e6);
  return later;
}

Utc Utc::whole_second() const {
  Utc whole;
  whole.microseconds_ = floor_div(microseconds_, million) * million;
  return whole;
}

std::string Utc::text(bool with_z) const {
  using namespace std::chrono;
  const std::int64_t days = floor_div(microseconds_, day_seconds * million);
  const std::int64_t rest = microseconds_ - days * day_seconds * million;
  const year_month_day date{sys_days{std::chrono::days{days}}};
  const std::int64_t seconds = rest / million;
  std::array<char, 64> buffer{};
  std::snprintf(buffer.data(), buffer.size(), "%04d-%02u-%02uT%02d:%02d:%02d.%06d%s",
                static_cast<int>(date.year()), static_cast<unsigned>(date.month()),
                static_cast<unsigned>(date.day()), static_cast<int>(seconds / 3600),
                static_cast<int>(seconds / 60 % 60), static_cast<int>(seconds % 60),
                static_cast<int>(rest % million), with_z ? "Z" : "");
  return buffer.data();
}

std::string Utc::compact() const {
  const std::string full = text();
  return full.substr(0, 4) + full.substr(5, 2) + full.substr(8, 2) + 'T' + full.substr(11, 2) +
         full.substr(14, 2) + full.substr(17, 2);
}

std::int64_t Utc::gps_seconds() const {
  return floor_div(microseconds_, million) - days_to(1980, 1, 6) * day_seconds + gps_minus_utc();
}

int Utc::gps_minus_utc() const {
  return leap_second_at(microseconds_).gps_minus_utc;
}

Utc Utc::last_leap_second() const {
  const LeapSecond& last = leap_second_at(microseconds_);
  Utc instant;
  instant.microseconds_ = days_to(last.year, last.month, 1) * day_seconds * million;
  return instant;
}

double Utc::fraction() const {
  return static_cast<double>(microseconds_ - floor_div(microseconds_, million) * million) / 1e6;
}

double Utc::since(const Utc& other) const {
  return static_cast<double>(microseconds_ - other.microseconds_) / 1e6;
}

}  // namespace simulate
