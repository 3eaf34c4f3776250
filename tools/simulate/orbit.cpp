#include "tools/simulate/orbit.h"

#include <algorithm>
#include <stdexcept>

namespace simulate {

namespace {

constexpr double orbit_radius = 6892137.0;  // m
constexpr double inclination = 97.44 * degree;
constexpr Vector3 earth_rotation{0, 0, wgs84::rotation};

// Circular state at time 0 from the argument of latitude and the node's Earth-fixed longitude.
State circular_state(double argument, double node) {
  const double speed = std::sqrt(wgs84::gravity / orbit_radius);
  const double cu = std::cos(argument);
  const double su = std::sin(argument);
  const double ci = std::cos(inclination);
  const double si = std::sin(inclination);
  const double cn = std::cos(node);
  const double sn = std::sin(node);
  const Vector3 along{cu * cn - su * ci * sn, cu * sn + su * ci * cn, su * si};
  const Vector3 forward{-su * cn - cu * ci * sn, -su * sn + cu * ci * cn, cu * si};
  const Vector3 position = orbit_radius * along;
  return {position, speed * forward - cross(earth_rotation, position)};
}

Vector3 gravity_at(Vector3 r) {
  const double d2 = dot(r, r);
  const double d = std::sqrt(d2);
  const double k = 1.5 * wgs84::j2 * wgs84::semimajor * wgs84::semimajor / d2;
  const double z2 = 5 * r.z * r.z / d2;
  const double f = -wgs84::gravity / (d2 * d);
  return {f * r.x * (1 + k * (1 - z2)), f * r.y * (1 + k * (1 - z2)), f * r.z * (1 + k * (3 - z2))};
}

State advance(const State& s, double h) {
  const auto shifted = [&](Vector3 v, Vector3 a, double step) {
    return State{s.position + step * v, s.velocity + step * a};
  };
  const Vector3 v1 = s.velocity;
  const Vector3 a1 = gravity_at(s.position);
  const State s2 = shifted(v1, a1, h / 2);
  const Vector3 a2 = gravity_at(s2.position);
  const State s3 = shifted(s2.velocity, a2, h / 2);
  const Vector3 a3 = gravity_at(s3.position);
  const State s4 = shifted(s3.velocity, a3, h);
  const Vector3 a4 = gravity_at(s4.position);
  return {s.position + h / 6 * (v1 + 2 * s2.velocity + 2 * s3.velocity + s4.velocity),
          s.velocity + h / 6 * (a1 + 2 * a2 + 2 * a3 + a4)};
}

Vector3 rotate(Vector3 r, double angle) {
  const double c = std::cos(angle);
  const double s = std::sin(angle);
  return {c * r.x - s * r.y, s * r.x + c * r.y, r.z};
}

struct Miss {
  double along;      // m, off the zero-Doppler plane
  double incidence;  // rad, signed: negative on the other side
};

Miss miss_of(const State& s, const Acquisition& a) {
  const Vector3 target = to_earth_fixed(a.place);
  const Vector3 sight = s.position - target;
  const double angle = std::acos(dot(unit(sight), up_at(a.place)));
  const Vector3 right = cross(s.velocity, s.position);
  const bool on_right = dot(target - s.position, right) > 0;
  const bool on_side = on_right == (a.look == Look::right);
  return {dot(target - s.position, unit(s.velocity)), (on_side ? angle : -angle) - a.incidence};
}

}  // namespace

State solve_acquisition(const Acquisition& a) {
  // The sub-satellite point lies beside the place, across the track; start from there.
  const double off_nadir = std::asin(wgs84::semimajor / orbit_radius * std::sin(a.incidence));
  const double arc = a.incidence - off_nadir;
  const bool ascending = a.pass == Pass::ascending;
  const double ratio = std::cos(inclination) / std::cos(a.place.latitude_radians);
  const double heading = ascending ? std::asin(std::clamp(ratio, -1.0, 1.0))
                                   : std::numbers::pi - std::asin(std::clamp(ratio, -1.0, 1.0));
  const double side =
      a.look == Look::right ? -1 : 1;  // where the satellite is, seen from the place
  const double bearing = heading + side * std::numbers::pi / 2;
  const double latitude = a.place.latitude_radians + arc * std::cos(bearing);
  const double longitude =
      a.place.longitude_radians + arc * std::sin(bearing) / std::cos(a.place.latitude_radians);
  double argument = std::asin(std::clamp(std::sin(latitude) / std::sin(inclination), -1.0, 1.0));
  if (!ascending) argument = std::numbers::pi - argument;
  double node =
      longitude - std::atan2(std::sin(argument) * std::cos(inclination), std::cos(argument));
  for (int i = 0; i < 30; ++i) {
    const Miss miss = miss_of(circular_state(argument, node), a);
    if (std::abs(miss.along) < 1e-6 && std::abs(miss.incidence) < 1e-13) {
      return circular_state(argument, node);
    }
    constexpr double step = 1e-7;
    const Miss du = miss_of(circular_state(argument + step, node), a);
    const Miss dn = miss_of(circular_state(argument, node + step), a);
    const double a11 = (du.along - miss.along) / step;
    const double a12 = (dn.along - miss.along) / step;
    const double a21 = (du.incidence - miss.incidence) / step;
    const double a22 = (dn.incidence - miss.incidence) / step;
    const double determinant = a11 * a22 - a12 * a21;
    argument -= (a22 * miss.along - a12 * miss.incidence) / determinant;
    node -= (a11 * miss.incidence - a21 * miss.along) / determinant;
  }
  throw std::invalid_argument("no orbit sees that place that way; choose one farther from a pole");
}

State propagate(const State& earth_fixed, double seconds) {
  // In the frame that stands still and agrees with the Earth-fixed one at the start.
  State s{earth_fixed.position, earth_fixed.velocity + cross(earth_rotation, earth_fixed.position)};
  const int steps = std::max(1, static_cast<int>(std::ceil(std::abs(seconds))));
  for (int i = 0; i < steps; ++i) s = advance(s, seconds / steps);
  const double angle = -wgs84::rotation * seconds;
  const Vector3 position = rotate(s.position, angle);
  return {position, rotate(s.velocity, angle) - cross(earth_rotation, position)};
}

}  // namespace simulate
