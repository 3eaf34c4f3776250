#pragma once

#include "lmx/datetime.h"

namespace companion {

// Seconds from the midnight that begins the day of `start`; both in UTC.
double seconds_since_midnight(const lmx::c_datetime& time, const lmx::c_datetime& start);

}  // namespace companion
