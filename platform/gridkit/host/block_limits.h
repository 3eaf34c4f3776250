#pragma once

#include <cstdint>
#include <functional>
#include <limits>

namespace gridkit {

// The largest size of square blocks that is asked for beside the preferred one.
inline constexpr std::int32_t largest_tried_block = 4096;

// Which blocks of an image a plug-in delivers. A plug-in may refuse a block for two reasons: no
// block may start where it starts, or it reaches past the data. Further down the image both reasons
// apply more often, never less. A block whose last line is the last line of the data is delivered,
// unless it reaches past the image's right edge: there the plug-in would read on into a line that
// is not there.
struct BlockLimits {
  // The first pixel, line by line, that is refused when it is asked for as a block of 1 x 1. Every
  // pixel before it is delivered so; it and all after it are past the data, or no block may start
  // there.
  std::int32_t line;
  std::int32_t column;
  // Blocks that start before that pixel are delivered if their last line lies above this one. So
  // this is the end, exclusive, of the lines that blocks larger than a pixel can bring.
  std::int32_t end;
  // From this line on there are no data, as far as blocks tell: one that may start where it does
  // is refused because of where it ends. Beyond the image where none is.
  std::int32_t data_end = std::numeric_limits<std::int32_t>::max();
};

// Whether the block of that size comes.
using BlockProbe = std::function<bool(std::int32_t size, std::int32_t row, std::int32_t column)>;

// Finds the limits of an image of [height][width] pixels, both at least 1, by halves: a few dozen
// probes whatever the image's size.
BlockLimits find_block_limits(std::int32_t width, std::int32_t height, const BlockProbe& comes);

}  // namespace gridkit
