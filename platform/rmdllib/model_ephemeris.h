#pragma once

#include <stdint.h>

#include "gridkit/export.h"
#include "gridkit/report.h"
#include "rmdllib/radar_generic_model.h"

#ifdef __cplusplus
extern "C" {
#endif

// Time in the model is in seconds, counted from 0 h UTC of the day on which the scene starts. A
// record tells the first state vector's time as `first_pt_secs_of_day` in one of three forms, which
// differ where midnight lies between that vector and the scene's start:
//   same day          the seconds of the day themselves, 0 to 86400;
//   the day before    ((24 - h) * 60 - m) * 60 + s for hours h, minutes m, seconds s: 60 to 86460;
//   the day after     86400 more than the second of its day: 86400 to 172800.
// Days are told apart by the day of the year, so around New Year's Eve the last two change places:
// the 31st of December before a scene of the 1st of January has the form of the day after.
//
// The forms overlap. The time on the model's axis is, of the readings that the number allows, the
// one whose span of state vectors, `interval` apart, has its middle nearest the middle of the
// scene; of two that are equally near the number as it stands. Two readings lie at least 120 s
// apart, so the right one is found while the vectors reach beyond the scene by less than 120 s more
// on one side than on the other.
//
// Any arguments are fine: with a time that is not finite, without a count, or with vectors over
// more than a day, whose middle tells nothing, the result is the number as it stands.
GRIDKIT_API double rmdl_FirstStateTime(double first_pt_secs_of_day, double interval, int32_t count,
                                       double image_start_time, double image_duration);

// Models position and velocity, per axis, as a quadratic in time about the middle of the scene,
// t = time - (image_start_time + image_duration / 2):
//   position_x(t) = rs_coeffs[0] + rs_coeffs[1] * t + rs_coeffs[2] * t * t     metres
//   position_y:     rs_coeffs[3..5],  position_z: rs_coeffs[6..8]
//   velocity_x(t) = vs_coeffs[0] + vs_coeffs[1] * t + vs_coeffs[2] * t * t     metres per second
//   velocity_y:     vs_coeffs[3..5],  velocity_z: vs_coeffs[6..8]
// in the Earth-fixed frame of the state vectors; the first of them has its time from
// rmdl_FirstStateTime.
//
// The terms come from a weighted least-squares fit over samples of the orbit between the state
// vectors: positions by the cubic Hermite polynomial through both positions and velocities,
// velocities by its derivative. So velocity is the rate of position everywhere, meets the given
// velocities at the vectors, and needs no accelerations, which a polynomial through velocities of
// its own would have to guess, from two vectors not at all.
//
// The samples reach beyond both ends of the scene by a margin, as far as there are state vectors:
// one interval, but no more than the scene's duration or 1 s, whichever is longer. Their weight is
// 1 in the scene and falls to 0 at the margin's end, with the square of the distance from there.
// The margin keeps the terms of a scene of one line defined; the weights keep the fit inside. What
// a quadratic lacks is the cubic term, 1.6 mm/s^3 at 6883 km: with equal weights over 10 s of
// margin it leaves 0.91 m at the ends of a 10 s scene, with these 0.34 m and 0.4 mm/s (vectors 10 s
// apart, the largest along a whole orbit). A negative duration counts backwards from the start. A
// scene that the state vectors do not reach is modelled over all of them, with equal weights.
//
// Writes rs_coeffs and vs_coeffs and nothing else. On failure a report is stored and both stay as
// they were: a null model, fewer than two state vectors, an array that is missing or shorter than
// num_pos_pts, an interval that is not positive, a time, position or velocity that is not finite,
// or terms beyond the range of a double. The work is bounded by the number of samples, apart from
// one look at each position and velocity.
GRIDKIT_API void rmdl_modelEphemeris(RadarGenericModel* model, gke_Report** err);

#ifdef __cplusplus
}
#endif
