#pragma once

inline constexpr double speed_of_light = 299792458.0;  // m/s, by definition of the metre
