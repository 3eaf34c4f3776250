#include "tools/simulate/map_projection.h"

#include <array>

namespace simulate {

namespace {

constexpr double n = wgs84::flattening / (2 - wgs84::flattening);
constexpr double n2 = n * n;
constexpr double n3 = n2 * n;
constexpr double n4 = n3 * n;
constexpr double rectifying_radius = wgs84::semimajor / (1 + n) * (1 + n2 / 4 + n4 / 64);
constexpr std::array<double, 4> alpha = {n / 2 - 2 * n2 / 3 + 5 * n3 / 16 + 41 * n4 / 180,
                                         13 * n2 / 48 - 3 * n3 / 5 + 557 * n4 / 1440,
                                         61 * n3 / 240 - 103 * n4 / 140, 49561 * n4 / 161280};
constexpr std::array<double, 4> beta = {n / 2 - 2 * n2 / 3 + 37 * n3 / 96 - n4 / 360,
                                        n2 / 48 + n3 / 15 - 437 * n4 / 1440,
                                        17 * n3 / 480 - 37 * n4 / 840, 4397 * n4 / 161280};

double eccentricity() {
  return std::sqrt(wgs84::eccentricity2);
}

// Tangent of the conformal latitude.
double conformal_tangent(double latitude) {
  const double e = eccentricity();
  const double s = std::sin(latitude);
  return std::sinh(std::atanh(s) - e * std::atanh(e * s));
}

// The latitude of a conformal latitude's tangent, by Newton's method.
double latitude_of(double tangent) {
  double t = tangent;
  for (int i = 0; i < 12; ++i) {
    const double latitude = std::atan(t);
    const double c = std::cos(latitude);
    const double f = conformal_tangent(latitude) - tangent;
    const double w = 1 - wgs84::eccentricity2 * std::sin(latitude) * std::sin(latitude);
    const double slope =
        std::hypot(1.0, conformal_tangent(latitude)) * (1 - wgs84::eccentricity2) / (w * c) * c * c;
    t -= f / slope;
    if (std::abs(f) < 1e-15 * std::hypot(1.0, tangent)) break;
  }
  return std::atan(t);
}

// Longitudes differ by less than half a turn.
double wrapped(double angle) {
  return std::remainder(angle, 2 * std::numbers::pi);
}

}  // namespace

MapProjection MapProjection::utm_at(const Geodetic& place) {
  const double east = wrapped(place.longitude_radians) / degree + 180;
  const int zone = std::min(60, static_cast<int>(east / 6) + 1);
  return {zone, place.latitude_radians >= 0};
}

MapProjection MapProjection::ups_at(const Geodetic& place) {
  return {0, place.latitude_radians >= 0};
}

int MapProjection::epsg() const {
  if (is_ups()) return north_ ? 32661 : 32761;
  return (north_ ? 32600 : 32700) + zone_;
}

Geodetic MapProjection::centre() const {
  if (is_ups()) return {(north_ ? 90 : -90) * degree, 0, 0};
  return {0, (6 * zone_ - 183) * degree, 0};
}

MapPoint MapProjection::origin() const {
  if (is_ups()) return {2000000, 2000000};
  return {500000, north_ ? 0.0 : 10000000.0};
}

double MapProjection::scale_factor() const {
  return is_ups() ? 0.994 : 0.9996;
}

MapPoint MapProjection::to_map(const Geodetic& place) const {
  const double longitude = wrapped(place.longitude_radians - centre().longitude_radians);
  const MapPoint zero = origin();
  if (is_ups()) {
    const double sign = north_ ? 1 : -1;
    const double e = eccentricity();
    const double t = std::exp(-std::asinh(conformal_tangent(sign * place.latitude_radians)));
    const double full = std::sqrt(std::pow(1 + e, 1 + e) * std::pow(1 - e, 1 - e));
    const double rho = 2 * wgs84::semimajor * scale_factor() * t / full;
    return {zero.easting + rho * std::sin(longitude),
            zero.northing - sign * rho * std::cos(longitude)};
  }
  const double t = conformal_tangent(place.latitude_radians);
  const double xi = std::atan2(t, std::cos(longitude));
  const double eta = std::asinh(std::sin(longitude) / std::hypot(t, std::cos(longitude)));
  double north = xi;
  double east = eta;
  for (int k = 1; k <= 4; ++k) {
    const double a = alpha[static_cast<std::size_t>(k - 1)];
    north += a * std::sin(2 * k * xi) * std::cosh(2 * k * eta);
    east += a * std::cos(2 * k * xi) * std::sinh(2 * k * eta);
  }
  const double scale = scale_factor() * rectifying_radius;
  return {zero.easting + scale * east, zero.northing + scale * north};
}

Geodetic MapProjection::to_ground(MapPoint point, double height) const {
  const MapPoint zero = origin();
  const double x = point.easting - zero.easting;
  const double y = point.northing - zero.northing;
  if (is_ups()) {
    const double sign = north_ ? 1 : -1;
    const double e = eccentricity();
    const double full = std::sqrt(std::pow(1 + e, 1 + e) * std::pow(1 - e, 1 - e));
    const double t = std::hypot(x, y) * full / (2 * wgs84::semimajor * scale_factor());
    return {sign * latitude_of(std::sinh(-std::log(t))), std::atan2(x, -sign * y), height};
  }
  const double scale = scale_factor() * rectifying_radius;
  const double north = y / scale;
  const double east = x / scale;
  double xi = north;
  double eta = east;
  for (int k = 1; k <= 4; ++k) {
    const double b = beta[static_cast<std::size_t>(k - 1)];
    xi -= b * std::sin(2 * k * north) * std::cosh(2 * k * east);
    eta -= b * std::cos(2 * k * north) * std::sinh(2 * k * east);
  }
  const double tangent = std::sin(xi) / std::hypot(std::sinh(eta), std::cos(xi));
  const double longitude = std::atan2(std::sinh(eta), std::cos(xi));
  return {latitude_of(tangent), wrapped(centre().longitude_radians + longitude), height};
}

}  // namespace simulate
