#include "gridkit/host/block_limits.h"

#include <algorithm>
#include <map>

#include "gridkit/host/first_refused.h"

namespace gridkit {

namespace {

// Of the blocks that start above a line and end below it: the lines that they end before, each with
// the smallest size that ends there.
std::map<std::int32_t, std::int32_t> ends_across(std::int32_t line, std::int32_t width,
                                                 std::int32_t height) {
  std::map<std::int32_t, std::int32_t> sizes;
  const std::int32_t largest = std::min({width, height, largest_tried_block});
  for (std::int32_t size = 2; line > 0 && size <= largest; ++size) {
    const std::int64_t end = (std::int64_t{line} - 1) / size * size + size;
    if (end > line && end <= height) sizes.emplace(static_cast<std::int32_t>(end), size);
  }
  return sizes;
}

// Blocks across the line where single pixels end tell why they end there.
std::int32_t find_end(std::int32_t line, std::int32_t width, std::int32_t height,
                      const BlockProbe& comes) {
  const auto sizes = ends_across(line, width, height);
  const auto is_there = [&](auto block) {
    const auto [end, size] = *block;
    return comes(size, end / size - 1, width / size - 1);
  };
  if (sizes.empty() || !is_there(sizes.begin())) return line;
  const auto refused =
      first_refused(1, static_cast<std::int64_t>(sizes.size()),
                    [&](std::int64_t i) { return is_there(std::next(sizes.begin(), i)); });
  const auto next = std::next(sizes.begin(), refused);
  return next == sizes.end() ? height : next->first - 1;
}

}  // namespace

BlockLimits find_block_limits(std::int32_t width, std::int32_t height, const BlockProbe& comes) {
  const std::int64_t pixel = first_refused(0, std::int64_t{width} * height, [&](std::int64_t i) {
    return comes(1, static_cast<std::int32_t>(i / width), static_cast<std::int32_t>(i % width));
  });
  const auto line = static_cast<std::int32_t>(pixel / width);
  return {line, static_cast<std::int32_t>(pixel % width), find_end(line, width, height, comes)};
}

}  // namespace gridkit
