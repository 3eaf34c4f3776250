#include "gridkit/host/tail.h"

#include <algorithm>

namespace gridkit {

namespace {

// What reading costs, counted in pixels that a block brings: to ask for a block at all, and to try
// another block size at all, since then the promise of every size is computed anew.
constexpr std::int64_t block_cost = 1000;
constexpr std::int64_t size_cost = 1000000;

constexpr int most_sizes = 16;

}  // namespace

void append(std::vector<LineRange>& ranges, const LineRange& lines) {
  if (!ranges.empty() && ranges.back().last == lines.first - 1 && ranges.back().why == lines.why) {
    ranges.back().last = lines.last;
  } else {
    ranges.push_back(lines);
  }
}

Tail::Tail(const Window& lines, std::int32_t image_width, const BlockLimits& limits)
    : window_(lines),
      image_width_(image_width),
      limits_(limits),
      filled_until_(static_cast<std::size_t>(lines.height), lines.column),
      pixels_(filled_until_.size() * static_cast<std::size_t>(lines.width)) {}

bool Tail::is_complete() const {
  return std::all_of(filled_until_.begin(), filled_until_.end(),
                     [&](std::int32_t until) { return until >= right(); });
}

void Tail::read(std::int32_t size, const BlockReader& read_block) {
  mark_tried(size);
  std::vector<std::uint16_t> block;
  for (const std::int32_t row : block_rows(size)) {
    for (const std::int32_t column : block_columns(size, row)) {
      if (!read_block(size, row, column, block)) {
        refuse(size, row, column);
        break;
      }
      deliver(size, row, column, block);
    }
  }
}

void Tail::read_with_best_sizes(const BlockReader& read_block) {
  for (int attempt = 0; attempt < most_sizes && !is_complete(); ++attempt) {
    const auto better = best_block_size();
    if (!better) return;
    read(*better, read_block);
  }
}

std::int32_t Tail::reach(std::int32_t size, std::int32_t line) const {
  const std::int32_t start = line / size * size;
  if (start > limits_.line) return 0;
  const bool starts_anywhere = start < limits_.line;
  if (size == 1) return starts_anywhere ? right() : limits_.column;
  const std::int64_t end = std::int64_t{start} + size;
  if (end > limits_.end) return 0;
  const std::int32_t until = end < limits_.end ? right() : image_width_ / size * size;
  if (starts_anywhere) return until;
  const std::int64_t starts = (std::int64_t{limits_.column} + size - 1) / size;
  return static_cast<std::int32_t>(std::min<std::int64_t>(until, starts * size));
}

Tail::Promise Tail::promise_of(std::int32_t size) const {
  Promise promise;
  for (std::int32_t i = 0; i < lines();) {
    // The lines of one row of blocks.
    const std::int32_t in_block = (window_.line + i) % size;
    const std::int32_t next = std::min(lines(), i + size - in_block);
    const std::int32_t until = std::min(reach(size, window_.line + i), right());
    std::int32_t from = until;
    for (; i < next; ++i) {
      const std::int32_t filled = filled_until_[static_cast<std::size_t>(i)];
      promise.pixels += std::max(until - filled, 0);
      from = std::min(from, filled);
    }
    if (from < until) promise.blocks += (until - 1) / size - from / size + 1;
  }
  return promise;
}

std::optional<std::int32_t> Tail::best_block_size() const {
  const std::int32_t largest =
      std::min({image_width_, std::max(limits_.end, 1), largest_tried_block});
  std::optional<std::int32_t> best;
  double most = 0;
  for (std::int32_t size = 1; size <= largest; ++size) {
    if (std::find(tried_.begin(), tried_.end(), size) != tried_.end()) continue;
    const Promise promise = promise_of(size);
    const std::int64_t cost = size_cost + promise.blocks * (block_cost + std::int64_t{size} * size);
    const double worth = static_cast<double>(promise.pixels) / static_cast<double>(cost);
    if (worth <= most) continue;
    most = worth;
    best = size;
  }
  return best;
}

std::vector<std::int32_t> Tail::block_rows(std::int32_t size) const {
  std::vector<std::int32_t> rows;
  for (std::int32_t i = 0; i < lines(); ++i) {
    const std::int32_t row = (window_.line + i) / size;
    const bool wanted = filled_until_[static_cast<std::size_t>(i)] < right();
    if (wanted && (rows.empty() || rows.back() != row)) rows.push_back(row);
  }
  return rows;
}

std::vector<std::int32_t> Tail::block_columns(std::int32_t size, std::int32_t row) const {
  std::int32_t from = right();
  std::int32_t until = 0;
  for (std::int32_t i = 0; i < lines(); ++i) {
    if ((window_.line + i) / size != row) continue;
    from = std::min(from, filled_until_[static_cast<std::size_t>(i)]);
    until = std::min(reach(size, window_.line + i), right());
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
    const std::int32_t in_block = window_.line + i - row * size;
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

// The limits told that the block may start where it does, so it ended too far down.
void Tail::refuse(std::int32_t size, std::int32_t row, std::int32_t column) {
  const std::int64_t end = (std::int64_t{row} + 1) * size;
  const bool past_right = (std::int64_t{column} + 1) * size > image_width_;
  const std::int64_t most = past_right ? end : end - 1;
  limits_.end = static_cast<std::int32_t>(std::min<std::int64_t>(limits_.end, most));
}

std::vector<LineRange> Tail::missing() const {
  std::vector<LineRange> ranges;
  for (std::int32_t i = 0; i < lines(); ++i) {
    if (filled_until_[static_cast<std::size_t>(i)] >= right()) continue;
    const std::int32_t line = window_.line + i;
    append(ranges, {line, line, why(line)});
  }
  return ranges;
}

}  // namespace gridkit
