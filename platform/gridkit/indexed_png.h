#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "gridkit/error.h"
#include "gridkit/export.h"

namespace gridkit {

// A colour of the sRGB space and how far it covers what is beneath it: 0 not at all, 255 wholly.
struct Colour {
  std::uint8_t red = 0;
  std::uint8_t green = 0;
  std::uint8_t blue = 0;
  std::uint8_t alpha = 255;

  friend bool operator==(const Colour&, const Colour&) = default;
};

// A picture of at most 256 colours.
struct IndexedPicture {
  std::int32_t width = 0;
  std::int32_t height = 0;
  std::vector<std::uint8_t> pixels;  // [height][width] numbers of the palette
  std::vector<Colour> palette;
  std::vector<std::pair<std::string, std::string>> texts;  // keys of 1 to 79 characters
};

// The picture as the bytes of a PNG file with a palette. Throws Error for a picture without
// pixels, with another number of pixels than its size says, or with a pixel outside its palette.
GRIDKIT_API std::vector<std::byte> encode_png(const IndexedPicture& picture);

}  // namespace gridkit
