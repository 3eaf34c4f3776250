#include <memory>
#include <new>

#include <regex.h>

#include "gridkit/services/plain_locale.h"
#include "gridkit/text.h"

namespace {

// A compiled expression; regfree belongs to every successful regcomp.
class Compiled {
 public:
  explicit Compiled(const char* pattern)
      : valid_(regcomp(&expression_, pattern, REG_EXTENDED | REG_NOSUB) == 0) {}
  Compiled(const Compiled&) = delete;
  Compiled& operator=(const Compiled&) = delete;
  ~Compiled() {
    if (valid_) regfree(&expression_);
  }
  bool valid() const { return valid_; }
  bool matches(const char* text) const { return regexec(&expression_, text, 0, nullptr, 0) == 0; }

 private:
  regex_t expression_{};
  bool valid_;
};

// The service has one current pattern by its nature; each thread has its own.
std::unique_ptr<Compiled>& current_pattern() {
  thread_local std::unique_ptr<Compiled> pattern;
  return pattern;
}

}  // namespace

int32_t gks_REComp(const char* pattern) {
  const gridkit::PlainLocale plain;
  auto& current = current_pattern();
  current.reset();
  if (pattern == nullptr) return -1;
  current.reset(new (std::nothrow) Compiled(pattern));
  if (current != nullptr && current->valid()) return 0;
  current.reset();
  return -1;
}

int32_t gks_REExec(const char* text) {
  const gridkit::PlainLocale plain;
  const auto& current = current_pattern();
  return text != nullptr && current != nullptr && current->matches(text) ? 1 : 0;
}
