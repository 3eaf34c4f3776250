#pragma once

#include <optional>
#include <string_view>

namespace gridkit {

// Sets the number preference "sister_satellites" of every group for this thread alone, above what
// the process has set; null ends that. Gives what was set before. The number stays the caller's and
// must live as long.
const double* set_for_this_thread(const double* sister_satellites);

// The number that this thread alone has for a preference.
std::optional<double> number_of_this_thread(std::string_view name);

}  // namespace gridkit
