#include <cmath>

#include "rmdllib/model_ephemeris.h"

namespace {

constexpr double minute = 60;
constexpr double day = 86400;

// Undoes the form 86400 - T + 2 s, for T seconds of the day of which s lie beyond the whole minute:
// every other term is a whole number of minutes, so s is the remainder.
double seconds_before_midnight(double form) {
  return form - 2 * std::fmod(form, minute);
}

}  // namespace

double rmdl_FirstStateTime(double first_pt_secs_of_day, double interval, int32_t count,
                           double image_start_time, double image_duration) {
  const double form = first_pt_secs_of_day;
  const double middle = image_start_time + image_duration / 2;
  const double span = interval * (static_cast<double>(count) - 1);
  const auto distance = [&](double time) { return std::abs(time + span / 2 - middle); };
  double nearest = form;
  const auto consider = [&](double time) {
    if (distance(time) < distance(nearest)) nearest = time;
  };
  if (count < 1 || span > day) return form;
  const bool may_count_back = form >= minute && form < day + minute;
  if (may_count_back) {
    consider(-seconds_before_midnight(form));
    consider(2 * day - seconds_before_midnight(form));
  }
  const bool may_count_a_day_on = form >= day && form < 2 * day;
  if (may_count_a_day_on) consider(form - 2 * day);
  return nearest;
}
