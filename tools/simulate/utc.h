#pragma once

#include <cstdint>
#include <string>

namespace simulate {

// A UTC instant: a day and microseconds of it. Days are of the proleptic Gregorian calendar,
// counted from 1970-01-01; no leap second is ever inside a product.
class Utc {
 public:
  Utc() = default;

  // Parses YYYY-MM-DDThh:mm:ss[.ffffff][Z]. Throws std::invalid_argument.
  static Utc parse(const std::string& text);

  // An instant that lies `seconds` later (or earlier), to the nearest microsecond.
  Utc after(double seconds) const;

  // Rounded down to a whole second.
  Utc whole_second() const;

  // YYYY-MM-DDThh:mm:ss.ffffff, with a Z behind it where asked for.
  std::string text(bool with_z = true) const;

  // YYYYMMDDThhmmss, as in product names.
  std::string compact() const;

  // Seconds since 1980-01-06 on the GPS scale, which has no leap seconds.
  std::int64_t gps_seconds() const;
  double fraction() const;  // of the second, [0, 1)

  // Seconds that the GPS scale is ahead of UTC, and since when.
  int gps_minus_utc() const;
  Utc last_leap_second() const;

  // Seconds from another instant to this one.
  double since(const Utc& other) const;

 private:
  std::int64_t microseconds_ = 0;  // since 1970-01-01T00:00:00
};

}  // namespace simulate
