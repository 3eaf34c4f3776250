#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <vector>

#include "gridkit/export.h"
#include "gridkit/product.h"

namespace gridkit {

// A part of an image.
struct Window {
  std::int32_t column = 0;
  std::int32_t line = 0;
  std::int32_t width = 0;
  std::int32_t height = 0;
};

// Throws Error for a window that does not lie in an image of that size.
GRIDKIT_API void check_window(const Window& window, std::int64_t width, std::int64_t height);

// The same for the layer's image, and for a layer whose blocks cannot be read in windows.
GRIDKIT_API void check_window(const Layer& layer, const Window& window);

// Why lines of an image did not come.
enum class Unread {
  no_data,       // the product holds no data there: a block is refused because of where it ends
  out_of_reach,  // no block brings them; whether the product holds data there is not known
};

// Lines of the image, both ends included.
struct LineRange {
  std::int32_t first;
  std::int32_t last;
  Unread why = Unread::no_data;  // of lines that did not come
};

// Takes whole lines of a window, in order: [lines][window width] pixels.
using LineSink = std::function<void(std::span<const std::uint16_t> pixels, std::int32_t lines)>;

// The same, and whether all pixels of these lines came.
using MarkedLineSink =
    std::function<void(std::span<const std::uint16_t> pixels, std::int32_t lines, bool complete)>;

// Reads a window of a layer and hands its lines to the sink. Layers that are made of an image's
// samples, as the plug-in's companion tells (gridkit/companion.h), are made of them here too, with
// the same pixels, on every core; then every pixel comes that the file holds. What follows is of
// all others, which are read row of blocks by row of blocks.
//
// A plug-in may refuse blocks: near the bottom of an image, or because a line of the block lies
// past the end of its file; then it delivers nothing of the block. From the first row of blocks on
// that does not come with the preferred block size, it is found out which blocks do, and pixels are
// asked for with other block sizes, set through the number preference "default_block_size" of the
// group "import", as long as one promises more; the preference is put back afterwards. So every
// line comes that some block brings. Blocks that reach past the right edge are cropped.
//
// Windows of different products may be read on different threads. While one asks for a tail, a
// layer that another thread opens by itself may get that block size; the layer tells which it has.
//
// Gives the lines that did not come, in part or in whole; their missing pixels are 0. Memory:
// a row of blocks and as much of the last `longest_tail` lines before the data's end, each of at
// most `most_bytes_held`. Sizes come from strangers, so windows of more than `most_lines` lines or
// `most_pixels` pixels are refused, and those that would be zeros for more than `most_empty_pixels`
// pixels from some line on. Throws Error for these, a window outside the image or a failing read.
GRIDKIT_API std::vector<LineRange> read_window(const Product& product, const std::string& layer,
                                               const Window& window, const LineSink& sink);
GRIDKIT_API std::vector<LineRange> read_window(const Product& product, const std::string& layer,
                                               const Window& window, const MarkedLineSink& sink);

inline constexpr std::int32_t longest_tail = 4096;
inline constexpr std::int64_t most_bytes_held = std::int64_t{1} << 30;
inline constexpr std::int64_t most_lines = std::int64_t{1} << 24;
inline constexpr std::int64_t most_pixels = std::int64_t{1} << 34;
inline constexpr std::int64_t most_empty_pixels = std::int64_t{1} << 30;

}  // namespace gridkit
