#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string>

namespace gridkit {

// Where an image lies on its map: column c and line r, counted at pixel corners, lie at
// x = upper_left[0] + c * pixel_size[0], y = upper_left[1] + r * pixel_size[1]. An image with north
// up has a negative height of its pixels.
struct MapInfo {
  std::string projection;
  double upper_left[2] = {0, 0};  // x, y of the outer corner of the first pixel
  double pixel_size[2] = {0, 0};  // width, height
  std::string units;
};

// A projection in its MIF form, see gkj_ProjectionConvertToMIF: its name and the values 2 to 9,
// with nothing for a value that the projection has no use for.
struct MapProjection {
  std::string name;
  std::array<std::optional<std::string>, 8> values;

  // A value by its number, 2 to 9.
  const std::optional<std::string>& value(std::size_t number) const {
    return values.at(number - 2);
  }

  friend bool operator==(const MapProjection&, const MapProjection&) = default;
};

}  // namespace gridkit
