#pragma once

#include <ostream>

#include "tools/simulate/options.h"

// Scenes all over the world, in space and in time.
struct SceneSite {
  const char* what;
  double latitude;
  double longitude;
  simulate::Pass pass;
  simulate::Look look;
  const char* start;
};

inline void PrintTo(const SceneSite& site, std::ostream* out) {
  *out << site.what;
}

inline constexpr SceneSite scene_sites[] = {
    {"north", 48, 11, simulate::Pass::descending, simulate::Look::right, "2008-03-10T13:32:20"},
    {"left", 48, 11, simulate::Pass::ascending, simulate::Look::left, "2008-03-10T13:32:20"},
    {"south", -33, 18, simulate::Pass::ascending, simulate::Look::right, "2010-01-01T05:00:00"},
    {"southleft", -33, 18, simulate::Pass::descending, simulate::Look::left, "2010-01-01T05:00:00"},
    {"dateline", 10, 179.999, simulate::Pass::ascending, simulate::Look::right,
     "2012-06-30T12:00:00"},
    {"datelinewest", -10, -179.999, simulate::Pass::descending, simulate::Look::right,
     "2012-06-30T12:00:00"},
    {"midnight", 60, 25, simulate::Pass::ascending, simulate::Look::right, "2008-12-31T23:59:59.9"},
    {"aftermidnight", 60, 25, simulate::Pass::ascending, simulate::Look::right,
     "2008-03-11T00:00:20"},
    {"newyear", 60, 25, simulate::Pass::descending, simulate::Look::left, "2009-01-01T00:00:20"},
    {"polar", 78, 15, simulate::Pass::ascending, simulate::Look::right, "2008-07-01T00:00:00"},
};
