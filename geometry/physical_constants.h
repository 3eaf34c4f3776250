#pragma once

inline constexpr double speed_of_light = 299792458.0;  // m/s, by definition of the metre

// The ellipsoid that published sensor models state. The semi-minor axis has three decimals, 0.245
// mm less than WGS 84's 6356752.31424518 m: clients know the record with this value.
inline constexpr double published_semimajor = 6378137.0;    // m
inline constexpr double published_semiminor = 6356752.314;  // m
