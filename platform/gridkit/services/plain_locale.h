#pragma once

#include <locale.h>

namespace gridkit {

// While it lives, the C library works on this thread in the locale "C", whatever the process has
// chosen: numbers have a point and no groups, "A-Z" means the letters of ASCII, and the system's
// errors are told in English. Programs with windows and interpreters do choose a locale, and what
// this library reads and writes must not change with it.
class PlainLocale {
 public:
  PlainLocale() noexcept;
  PlainLocale(const PlainLocale&) = delete;
  PlainLocale& operator=(const PlainLocale&) = delete;
  ~PlainLocale();

 private:
  locale_t before_;
};

}  // namespace gridkit
