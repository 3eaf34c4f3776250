#include <cmath>
#include <initializer_list>

#include "rmdllib/model_ephemeris.h"

namespace {

constexpr double day = 86400;

// Undoes the form of the day before, 86400 - T + 2 s for T seconds of the day with s of them beyond
// the whole minute: all other terms are whole minutes, so s is the remainder.
double seconds_before_midnight(double form) {
  return form - 2 * std::fmod(form, 60.0);
}

}  // namespace

double rmdl_FirstStateTime(double first_pt_secs_of_day, double interval, int32_t count,
                           double image_start_time, double image_duration) {
  const double middle = image_start_time + image_duration / 2;
  const double span = interval * (static_cast<double>(count) - 1);
  const double before = -seconds_before_midnight(first_pt_secs_of_day);
  // The form of the day after counts on the model's axis already.
  for (const double time :
       {first_pt_secs_of_day, before, first_pt_secs_of_day - 2 * day, before + 2 * day}) {
    if (time <= middle && middle <= time + span) return time;
  }
  return first_pt_secs_of_day;
}
