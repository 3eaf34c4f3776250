#pragma once

#include <cstdint>
#include <functional>

namespace gridkit {

// The largest size of square blocks that is asked for beside the preferred one.
inline constexpr std::int32_t largest_tried_block = 4096;

// Which blocks of an image a plug-in delivers. It may refuse a block because of where it starts,
// and because it ends past the data: both only ever get stricter further down the image. A block
// that ends with the last line of the data can be had as long as it does not reach past the right
// edge, where nothing follows it.
struct BlockLimits {
  // The first pixel in reading order that does not come as a block of its own: it and what follows
  // is past the data, or no block may start there. What stands before it comes.
  std::int32_t line;
  std::int32_t column;
  // No block that starts above the pixel and ends below this line comes: lines before it are those
  // that blocks larger than a pixel can bring.
  std::int32_t end;
};

// Whether the block of that size comes.
using BlockProbe = std::function<bool(std::int32_t size, std::int32_t row, std::int32_t column)>;

// Finds the limits of an image of [height][width] pixels, both at least 1, by halves: a few dozen
// probes whatever the image's size.
BlockLimits find_block_limits(std::int32_t width, std::int32_t height, const BlockProbe& comes);

}  // namespace gridkit
