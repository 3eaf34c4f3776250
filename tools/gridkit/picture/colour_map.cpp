#include "tools/gridkit/picture/colour_map.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numbers>

#include "picture/stretch.h"

namespace {

constexpr double middle_lightness = 0.76;
constexpr double radius = 0.127;
constexpr double tilt = 0.7;         // radians
constexpr double highest_hue = 2.0;  // of the lightest colour, radians from red towards yellow

// Linear light to the sRGB transfer curve, in 8 bits.
std::uint8_t encode(double light) {
  const double shown =
      light <= 0.0031308 ? 12.92 * light : 1.055 * std::pow(light, 1 / 2.4) - 0.055;
  return static_cast<std::uint8_t>(std::lround(255 * std::clamp(shown, 0.0, 1.0)));
}

// OKLab to sRGB: roots of the cones' responses, then their light.
gridkit::Colour colour_of(double lightness, double a, double b) {
  const double long_cone = std::pow(lightness + 0.3963377774 * a + 0.2158037573 * b, 3);
  const double middle_cone = std::pow(lightness - 0.1055613458 * a - 0.0638541728 * b, 3);
  const double short_cone = std::pow(lightness - 0.0894841775 * a - 1.2914855480 * b, 3);
  return {
      encode(4.0767416621 * long_cone - 3.3077115913 * middle_cone + 0.2309699292 * short_cone),
      encode(-1.2684380046 * long_cone + 2.6097574011 * middle_cone - 0.3413193965 * short_cone),
      encode(-0.0041960863 * long_cone - 0.7034186147 * middle_cone + 1.7076147010 * short_cone),
      255};
}

}  // namespace

gridkit::Colour cyclic_colour(double turns) {
  const double angle = 2 * std::numbers::pi * turns;
  // Along the direction of the highest hue the circle rises, across it stays level.
  const double up = radius * std::cos(angle);
  const double level = radius * std::sin(angle);
  const double along = up * std::cos(tilt);
  return colour_of(middle_lightness + up * std::sin(tilt),
                   along * std::cos(highest_hue) - level * std::sin(highest_hue),
                   along * std::sin(highest_hue) + level * std::cos(highest_hue));
}

std::vector<gridkit::Colour> grey_map() {
  std::vector<gridkit::Colour> map = {{0, 0, 0, 0}};
  for (int i = 0; i < data_colours; ++i) {
    const auto grey = static_cast<std::uint8_t>(std::lround(i * 255.0 / (data_colours - 1)));
    map.push_back({grey, grey, grey, 255});
  }
  return map;
}

std::vector<gridkit::Colour> cyclic_map() {
  std::vector<gridkit::Colour> map = {{0, 0, 0, 0}};
  for (int i = 0; i < data_colours; ++i) map.push_back(cyclic_colour((i + 0.5) / data_colours));
  return map;
}
