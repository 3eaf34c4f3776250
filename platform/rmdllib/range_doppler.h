#pragma once

#include "gridkit/export.h"
#include "rmdllib/ellipsoid.h"
#include "rmdllib/orbit_track.h"

namespace rmdllib {

// Zero-Doppler coordinates: when a place is abeam of the satellite, in seconds of the orbit's time,
// and its slant range in metres.
struct RadarPoint {
  double time = 0;
  double range = 0;
};

enum class LookSide { left, right };

// When and how far away a place is seen, by Newton's method on the Doppler equation, from the start
// time given. Throws gridkit::Error when the place is not abeam within one interval of the orbit's
// state vectors.
GRIDKIT_API RadarPoint to_radar(const OrbitTrack& orbit, const Ellipsoid& earth,
                                const Geodetic& place, double start_time);

// The place at a height above the ellipsoid that is seen there, by Newton's method on range,
// Doppler and height. Throws gridkit::Error when the range does not reach that height.
GRIDKIT_API Geodetic to_ground(const OrbitTrack& orbit, const Ellipsoid& earth, LookSide side,
                               RadarPoint point, double height);

}  // namespace rmdllib
