#include "gridkit/services/preference_scope.h"

#include <utility>

#include "gridkit/opener.h"

namespace gridkit {

namespace {

thread_local const double* sister_satellites_here = nullptr;

}  // namespace

const double* set_for_this_thread(const double* sister_satellites) {
  return std::exchange(sister_satellites_here, sister_satellites);
}

std::optional<double> number_of_this_thread(std::string_view name) {
  if (sister_satellites_here == nullptr || name != "sister_satellites") return std::nullopt;
  return *sister_satellites_here;
}

SisterSatellites::SisterSatellites(bool are_welcome)
    : value_(are_welcome ? 1 : 0), before_(set_for_this_thread(&value_)) {}

SisterSatellites::~SisterSatellites() {
  set_for_this_thread(before_);
}

}  // namespace gridkit
