#include <algorithm>
#include <utility>

#include "gridkit/samples.h"
#include "gridkit/samples/ordered_work.h"

namespace gridkit {

namespace {

// What a thread reads at once: enough for a thread's own cost not to count, and little enough for a
// read to be ended soon.
constexpr std::int64_t bytes_at_once = std::int64_t{1024} * 1024;

SampleTarget with_strides(SampleTarget target, const SampleWindow& window, std::size_t bytes) {
  if (target.sample_stride == 0) target.sample_stride = static_cast<std::int64_t>(bytes);
  if (target.line_stride == 0) target.line_stride = target.sample_stride * window.samples;
  return target;
}

}  // namespace

void read_on_threads(const Samples& samples, std::size_t image, const SampleWindow& window,
                     const Conversion& conversion, const SampleTarget& given,
                     const ReadManner& manner, Delivered& delivered) {
  delivered = {};
  samples.check_window(image, window);
  const std::size_t bytes = form_bytes(conversion.form, samples.images().at(image).type);
  const SampleTarget target = with_strides(given, window, bytes);
  const std::int64_t line_bytes =
      std::max<std::int64_t>(window.samples * static_cast<std::int64_t>(bytes), 1);
  const bool in_one = manner.threads <= 1 && !manner.advance;
  const std::int64_t lines_at_once =
      in_one ? window.lines : std::max<std::int64_t>(bytes_at_once / line_bytes, 1);
  const auto read = [&](std::int64_t part, std::size_t) {
    const std::int64_t first = part * lines_at_once;
    SampleWindow lines = window;
    lines.line += first * window.line_step;
    lines.lines = std::min(lines_at_once, window.lines - first);
    SampleTarget place = target;
    place.data = static_cast<std::byte*>(target.data) + first * target.line_stride;
    samples.read(image, lines, conversion, place);
  };
  const auto take = [&](std::int64_t, std::size_t) {
    const std::int64_t lines = std::min(lines_at_once, window.lines - delivered.lines);
    delivered.lines += lines;
    if (!manner.advance || manner.advance(lines)) return;
    throw Cancelled("the read was cancelled after " + std::to_string(delivered.lines) + " of " +
                    std::to_string(window.lines) + " lines");
  };
  try {
    work_in_order((window.lines + lines_at_once - 1) / lines_at_once, manner.threads, read, take);
  } catch (const SampleError& error) {
    const std::int64_t before = delivered.lines;
    delivered = error.after_lines(before).delivered();
    throw error.after_lines(before);
  }
}

std::size_t usual_threads() {
  return usual_workers();
}

}  // namespace gridkit
