#include "companion/window.h"

#include <cstring>

namespace companion {

namespace {

// Whether `count` places from `first` on, `step` apart, lie below `size`.
bool lies_inside(std::int64_t first, std::int64_t count, std::int64_t step, std::int64_t size) {
  return first >= 0 && count >= 1 && step >= 1 && first < size &&
         count - 1 <= (size - 1 - first) / step;
}

std::string extent(std::int64_t first, std::int64_t count, std::int64_t step) {
  std::string text = std::to_string(count) + " from " + std::to_string(first) + " on";
  if (step != 1) text += " in steps of " + std::to_string(step);
  return text;
}

template <std::size_t bytes>
void copy(char* to, std::int64_t to_step, const char* from, std::int64_t from_step,
          std::int64_t count) {
  for (; count > 0; --count, to += to_step, from += from_step) std::memcpy(to, from, bytes);
}

}  // namespace

gkc_Window checked_window(const gkc_Window* window, const std::string& image, std::int64_t lines,
                          std::int64_t samples) {
  if (window == nullptr || window->size < sizeof(gkc_Window) || window->target == nullptr) {
    throw Failure(gkc_WrongUse, image + ": no window, or one without a target");
  }
  gkc_Window checked = *window;
  if (!lies_inside(checked.first_line, checked.lines, checked.line_step, lines) ||
      !lies_inside(checked.first_sample, checked.samples, checked.sample_step, samples)) {
    throw Failure(
        gkc_WrongUse,
        image +
            ": the window (lines: " + extent(checked.first_line, checked.lines, checked.line_step) +
            "; samples: " + extent(checked.first_sample, checked.samples, checked.sample_step) +
            ") does not lie in the image of " + std::to_string(lines) + " lines x " +
            std::to_string(samples) + " samples");
  }
  if (checked.lines == 1) checked.line_step = 1;
  if (checked.samples == 1) checked.sample_step = 1;
  return checked;
}

void deliver(const gkc_Window& window, std::int64_t line, std::int64_t sample, const char* from,
             std::int64_t count, std::size_t sample_bytes) {
  char* to = place_of(window, line, sample);
  const auto bytes = static_cast<std::int64_t>(sample_bytes);
  if (window.sample_step == 1 && window.sample_stride == bytes) {
    std::memcpy(to, from, static_cast<std::size_t>(count) * sample_bytes);
  } else if (sample_bytes == 4) {
    copy<4>(to, window.sample_stride, from, bytes * window.sample_step, count);
  } else {
    copy<2>(to, window.sample_stride, from, bytes * window.sample_step, count);
  }
}

}  // namespace companion
