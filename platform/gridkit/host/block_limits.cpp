#include "gridkit/host/block_limits.h"

#include <algorithm>
#include <map>

#include "gridkit/host/first_refused.h"

namespace gridkit {

namespace {

// The blocks that start above a line, or with the first one, and end below it, by the line that
// follows their last one; of several that end there, the smallest size.
std::map<std::int32_t, std::int32_t> ends_across(std::int32_t line, std::int32_t width,
                                                 std::int32_t height) {
  std::map<std::int32_t, std::int32_t> sizes;
  const std::int32_t largest = std::min({width, height, largest_tried_block});
  for (std::int32_t size = 2; size <= largest; ++size) {
    const std::int64_t end = (std::int64_t{line} - 1) / size * size + size;
    if (end > line && end <= height) sizes.emplace(static_cast<std::int32_t>(end), size);
  }
  return sizes;
}

// Single pixels end at this line because the data end there or because no block may start there. A
// block that starts above the line and ends below it tells the two apart: where the data go on it
// is delivered, and then the last such block that is delivered shows how far.
void find_ends(BlockLimits& limits, std::int32_t width, std::int32_t height,
               const BlockProbe& comes) {
  const std::int32_t line = limits.line;
  limits.end = line;
  if (line == 0 && limits.column == 0) return;  // no block starts anywhere
  const auto sizes = ends_across(line, width, height);
  const auto is_there = [&](auto block) {
    const auto [end, size] = *block;
    return comes(size, end / size - 1, line > 0 ? width / size - 1 : 0);
  };
  if (sizes.empty()) return;
  if (!is_there(sizes.begin())) {
    limits.data_end = sizes.begin()->first - 1;
    return;
  }
  const auto refused =
      first_refused(1, static_cast<std::int64_t>(sizes.size()),
                    [&](std::int64_t i) { return is_there(std::next(sizes.begin(), i)); });
  const auto next = std::next(sizes.begin(), refused);
  limits.end = next == sizes.end() ? height : next->first - 1;
  if (next != sizes.end()) limits.data_end = limits.end;
}

}  // namespace

BlockLimits find_block_limits(std::int32_t width, std::int32_t height, const BlockProbe& comes) {
  const std::int64_t pixel = first_refused(0, std::int64_t{width} * height, [&](std::int64_t i) {
    return comes(1, static_cast<std::int32_t>(i / width), static_cast<std::int32_t>(i % width));
  });
  const auto line = static_cast<std::int32_t>(pixel / width);
  BlockLimits limits{line, static_cast<std::int32_t>(pixel % width), line};
  find_ends(limits, width, height, comes);
  return limits;
}

}  // namespace gridkit
