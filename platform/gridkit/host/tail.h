#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <span>
#include <vector>

#include "gridkit/image_reader.h"

namespace gridkit {

// The lines at the bottom of a window that did not come with the first block size, and what is
// known of which blocks the plug-in delivers. Pixels of a line fill up from the left.
class Tail {
 public:
  Tail(const Window& window, std::int32_t first_line, std::int32_t image_width,
       std::int32_t image_height);

  bool is_complete() const;

  // A square block size that promises the most missing pixels, the smallest of several; nothing
  // when none promises any. A size that was tried is not offered again.
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
  std::int32_t lines() const { return static_cast<std::int32_t>(filled_until_.size()); }

  // The image's lines that are not complete.
  std::vector<LineRange> missing() const;

 private:
  std::int64_t promised_by(std::int32_t size) const;
  // Columns up to which blocks of that size may fill a line.
  std::int32_t reach(std::int32_t size, std::int32_t line) const;
  std::int32_t right() const { return window_.column + window_.width; }

  Window window_;
  std::int32_t first_line_;
  std::int32_t image_width_;
  std::int32_t image_height_;
  std::int32_t refused_start_ = std::numeric_limits<std::int32_t>::max();
  std::vector<std::int32_t> tried_;
  std::vector<std::int32_t> filled_until_;  // per line: columns before it are there
  std::vector<std::uint16_t> pixels_;       // [lines][window width]
};

}  // namespace gridkit
