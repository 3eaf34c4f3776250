#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <vector>

#include "gridkit/host/block_limits.h"
#include "gridkit/image_reader.h"

namespace gridkit {

// Reads a block, [size][size] pixels; false when it does not come.
using BlockReader = std::function<bool(std::int32_t size, std::int32_t row, std::int32_t column,
                                       std::vector<std::uint16_t>& block)>;

// Adds lines after those that are there.
void append(std::vector<LineRange>& ranges, const LineRange& lines);

// The lines at the bottom of a window that did not come with the first block size, and what is
// known of which blocks the plug-in delivers. Pixels of a line fill up from the left.
class Tail {
 public:
  // `lines` is the part of the window that is missing.
  Tail(const Window& lines, std::int32_t image_width, const BlockLimits& limits);

  bool is_complete() const;

  // Takes in what blocks of that size bring.
  void read(std::int32_t size, const BlockReader& read_block);

  // The same with the best size, and then with the one that is best for what is left, up to
  // sixteen.
  void read_with_best_sizes(const BlockReader& read_block);

  // The square block size that promises most missing pixels for the time that its blocks take, so
  // that large blocks bring the bulk and small ones only what is left of it; the smallest of
  // several, nothing when none promises any. A size that was tried is not offered again.
  std::optional<std::int32_t> best_block_size() const;

  // The block rows of that size that hold missing lines which may still come.
  std::vector<std::int32_t> block_rows(std::int32_t size) const;

  // The block columns that a row of blocks still needs, left to right.
  std::vector<std::int32_t> block_columns(std::int32_t size, std::int32_t row) const;

  // Takes in a delivered block, [size][size] pixels, or that it was refused.
  void deliver(std::int32_t size, std::int32_t row, std::int32_t column,
               std::span<const std::uint16_t> pixels);
  void refuse(std::int32_t size, std::int32_t row, std::int32_t column);
  void mark_tried(std::int32_t size) { tried_.push_back(size); }

  std::span<const std::uint16_t> pixels() const { return pixels_; }
  // The lines as the part of the image that they are.
  const Window& window() const { return window_; }
  std::int32_t lines() const { return static_cast<std::int32_t>(filled_until_.size()); }

  // The image's lines that are not complete.
  std::vector<LineRange> missing() const;

  // Why a line that did not come did not.
  Unread why(std::int32_t line) const {
    return line < limits_.data_end ? Unread::out_of_reach : Unread::no_data;
  }

 private:
  // What blocks of one size may bring, and how many of them it takes.
  struct Promise {
    std::int64_t pixels = 0;
    std::int64_t blocks = 0;
  };
  Promise promise_of(std::int32_t size) const;
  // Columns up to which blocks of that size may fill a line.
  std::int32_t reach(std::int32_t size, std::int32_t line) const;
  std::int32_t right() const { return window_.column + window_.width; }

  Window window_;
  std::int32_t image_width_;
  BlockLimits limits_;
  std::vector<std::int32_t> tried_;
  std::vector<std::int32_t> filled_until_;  // per line: columns before it are there
  std::vector<std::uint16_t> pixels_;       // [lines][window width]
};

}  // namespace gridkit
