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
//   same day          the seconds themselves;
//   the day before    with hours h, minutes m, seconds s: ((24 - h) * 60 - m) * 60 + s;
//   the day after     86400 more than the second of its day; the same form also stands for the
//                     31st of December before a scene that starts on the 1st of January.
// The time on the model's axis is the reading under which the state vectors, `interval` apart, span
// the middle of the scene, in the order above; where none does, the first.
GRIDKIT_API double rmdl_FirstStateTime(double first_pt_secs_of_day, double interval, int32_t count,
                                       double image_start_time, double image_duration);

// Models position and velocity, per axis, as a quadratic in time about the middle of the scene,
// t = time - (image_start_time + image_duration / 2):
//   position_x(t) = rs_coeffs[0] + rs_coeffs[1] * t + rs_coeffs[2] * t * t     metres
//   position_y:     rs_coeffs[3..5],  position_z: rs_coeffs[6..8]
//   velocity_x(t) = vs_coeffs[0] + vs_coeffs[1] * t + vs_coeffs[2] * t * t     metres per second
//   velocity_y:     vs_coeffs[3..5],  velocity_z: vs_coeffs[6..8]
// in the Earth-fixed frame of the state vectors. The terms come from a least-squares fit over
// samples of the orbit, interpolated between the state vectors by cubic Hermite polynomials, from
// one state interval before the scene to one behind it, as far as there are state vectors. A scene
// that the state vectors do not reach is modelled over all of them. Writes rs_coeffs and vs_coeffs
// and nothing else. On failure a report is stored and both stay as they were: a null model, fewer
// than two state vectors, an array that is missing or shorter than num_pos_pts, an interval that is
// not positive, or a time, position or velocity that is not finite.
GRIDKIT_API void rmdl_modelEphemeris(RadarGenericModel* model, gke_Report** err);

#ifdef __cplusplus
}
#endif
