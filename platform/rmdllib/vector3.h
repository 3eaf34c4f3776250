#pragma once

#include <cmath>

namespace rmdllib {

// A vector of three-dimensional space.
struct Vector3 {
  double x = 0;
  double y = 0;
  double z = 0;
};

constexpr Vector3 operator+(Vector3 a, Vector3 b) {
  return {a.x + b.x, a.y + b.y, a.z + b.z};
}
constexpr Vector3 operator-(Vector3 a, Vector3 b) {
  return {a.x - b.x, a.y - b.y, a.z - b.z};
}
constexpr Vector3 operator*(double factor, Vector3 a) {
  return {factor * a.x, factor * a.y, factor * a.z};
}
constexpr double dot(Vector3 a, Vector3 b) {
  return a.x * b.x + a.y * b.y + a.z * b.z;
}
constexpr Vector3 cross(Vector3 a, Vector3 b) {
  return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}
inline double length(Vector3 a) {
  return std::sqrt(dot(a, a));
}
inline Vector3 unit(Vector3 a) {
  return (1 / length(a)) * a;
}

}  // namespace rmdllib
