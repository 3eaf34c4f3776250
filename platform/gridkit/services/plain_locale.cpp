#include "gridkit/services/plain_locale.h"

namespace gridkit {

namespace {

// The C library holds this one ready: it costs no memory and is never freed.
locale_t plain() {
  static const locale_t c = ::newlocale(LC_ALL_MASK, "C", nullptr);
  return c;
}

}  // namespace

PlainLocale::PlainLocale() noexcept : before_(::uselocale(plain())) {}

PlainLocale::~PlainLocale() {
  ::uselocale(before_);
}

}  // namespace gridkit
