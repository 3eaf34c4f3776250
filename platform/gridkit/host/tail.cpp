#include "gridkit/host/tail.h"

namespace gridkit {

Tail::Tail(const Window& window, std::int32_t first_line, std::int32_t image_width,
           std::int32_t image_height)
    : window_(window),
      first_line_(first_line),
      image_width_(image_width),
      image_height_(image_height),
      filled_until_(static_cast<std::size_t>(window.line + window.height - first_line),
                    window.column),
      pixels_(filled_until_.size() * static_cast<std::size_t>(window.width)) {}

bool Tail::is_complete() const {
  return std::all_of(filled_until_.begin(), filled_until_.end(),
                     [&](std::int32_t until) { return until >= right(); });
}

// Of the blocks that may come: they start above every start that was refused, they end inside the
// image, and those that end with the image do not reach past the right edge either, since nothing
// follows their last line.
std::int32_t Tail::reach(std::int32_t size, std::int32_t line) const {
  const std::int64_t start = static_cast<std::int64_t>(line / size) * size;
  const std::int64_t end = start + size;
  if (start >= refused_start_ || end > image_height_) return 0;
  return end < image_height_ ? right() : image_width_ / size * size;
}

std::int64_t Tail::promised_by(std::int32_t size) const {
  std::int64_t pixels = 0;
  for (std::int32_t i = 0; i < lines(); ++i) {
    const std::int32_t until = std::min(reach(size, first_line_ + i), right());
    pixels += std::max(until - filled_until_[static_cast<std::size_t>(i)], 0);
  }
  return pixels;
}

std::optional<std::int32_t> Tail::best_block_size() const {
  const std::int32_t largest = std::min({image_width_, image_height_, largest_block});
  std::optional<std::int32_t> best;
  std::int64_t most = 0;
  for (std::int32_t size = 1; size <= largest; ++size) {
    if (std::find(tried_.begin(), tried_.end(), size) != tried_.end()) continue;
    const std::int64_t promised = promised_by(size);
    if (promised <= most) continue;
    most = promised;
    best = size;
  }
  return best;
}

std::vector<std::int32_t> Tail::block_rows(std::int32_t size) const {
  std::vector<std::int32_t> rows;
  for (std::int32_t i = 0; i < lines(); ++i) {
    const std::int32_t row = (first_line_ + i) / size;
    const bool wanted = filled_until_[static_cast<std::size_t>(i)] < right();
    if (wanted && (rows.empty() || rows.back() != row)) rows.push_back(row);
  }
  return rows;
}

std::vector<std::int32_t> Tail::block_columns(std::int32_t size, std::int32_t row) const {
  std::int32_t from = right();
  std::int32_t until = 0;
  for (std::int32_t i = 0; i < lines(); ++i) {
    if ((first_line_ + i) / size != row) continue;
    from = std::min(from, filled_until_[static_cast<std::size_t>(i)]);
    until = std::max(until, std::min(reach(size, first_line_ + i), right()));
  }
  std::vector<std::int32_t> columns;
  for (std::int32_t column = from / size; std::int64_t{column} * size < until; ++column) {
    columns.push_back(column);
  }
  return columns;
}

void Tail::deliver(std::int32_t size, std::int32_t row, std::int32_t column,
                   std::span<const std::uint16_t> pixels) {
  const std::int32_t left = std::max(column * size, window_.column);
  const std::int32_t end =
      static_cast<std::int32_t>(std::min<std::int64_t>((std::int64_t{column} + 1) * size, right()));
  for (std::int32_t i = 0; i < lines(); ++i) {
    const std::int32_t in_block = first_line_ + i - row * size;
    std::int32_t& until = filled_until_[static_cast<std::size_t>(i)];
    if (in_block < 0 || in_block >= size || until < left || until >= end) continue;
    const auto source = static_cast<std::size_t>(in_block) * static_cast<std::size_t>(size) +
                        static_cast<std::size_t>(until - column * size);
    const auto target = static_cast<std::size_t>(i) * static_cast<std::size_t>(window_.width) +
                        static_cast<std::size_t>(until - window_.column);
    std::copy_n(pixels.begin() + static_cast<std::ptrdiff_t>(source), end - until,
                pixels_.begin() + static_cast<std::ptrdiff_t>(target));
    until = end;
  }
}

// A refused block that lay wholly inside the image tells that its start is too far down.
void Tail::refuse(std::int32_t size, std::int32_t row, std::int32_t column) {
  const std::int64_t end = (std::int64_t{row} + 1) * size;
  const bool inside = end < image_height_ ||
                      (end == image_height_ && (std::int64_t{column} + 1) * size <= image_width_);
  if (inside) refused_start_ = std::min(refused_start_, row * size);
}

std::vector<LineRange> Tail::missing() const {
  std::vector<LineRange> ranges;
  for (std::int32_t i = 0; i < lines(); ++i) {
    if (filled_until_[static_cast<std::size_t>(i)] >= right()) continue;
    const std::int32_t line = first_line_ + i;
    if (!ranges.empty() && ranges.back().last == line - 1) {
      ranges.back().last = line;
    } else {
      ranges.push_back({line, line});
    }
  }
  return ranges;
}

}  // namespace gridkit
