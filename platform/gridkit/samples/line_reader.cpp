#include <algorithm>
#include <utility>
#include <vector>

#include "gridkit/samples.h"
#include "gridkit/samples/ordered_work.h"

namespace gridkit {

namespace {

// What a thread reads at once: enough for a thread's own cost not to count.
constexpr std::int64_t bytes_at_once = std::int64_t{1024} * 1024;

struct Strip {
  std::vector<std::byte> bytes;
  std::int64_t whole_lines = 0;
};

}  // namespace

std::int64_t read_in_order(const Samples& samples, std::size_t image, const SampleWindow& window,
                           const Conversion& conversion, const SampleLineSink& sink) {
  const std::size_t sample_bytes = form_bytes(conversion.form, samples.images().at(image).type);
  const std::int64_t line_bytes =
      std::max<std::int64_t>(window.samples, 1) * static_cast<std::int64_t>(sample_bytes);
  const std::int64_t lines_at_once = std::max<std::int64_t>(bytes_at_once / line_bytes, 1);
  const auto lines_of = [&](std::int64_t part) {
    return std::min(lines_at_once, window.lines - part * lines_at_once);
  };
  const std::size_t workers = usual_workers();
  std::vector<Strip> strips(slots_for(workers));
  std::int64_t whole_lines = 0;
  const auto read = [&](std::int64_t part, std::size_t slot) {
    Strip& strip = strips[slot];
    SampleWindow lines = window;
    lines.line += part * lines_at_once * window.line_step;
    lines.lines = lines_of(part);
    strip.bytes.resize(static_cast<std::size_t>(lines.lines * line_bytes));
    try {
      samples.read(image, lines, conversion, {strip.bytes.data()});
      strip.whole_lines = lines.lines;
    } catch (const SampleError& error) {
      if (error.code() != gkc_CutShort) throw;
      const auto& [whole, single] = error.delivered();
      strip.whole_lines = whole;
      const std::int64_t came =
          whole * line_bytes + single * static_cast<std::int64_t>(sample_bytes);
      std::fill(strip.bytes.begin() + came, strip.bytes.end(), std::byte{0});
    }
  };
  const auto take = [&](std::int64_t part, std::size_t slot) {
    const Strip& strip = strips[slot];
    const std::span<const std::byte> bytes(strip.bytes);
    const auto whole_bytes = static_cast<std::size_t>(strip.whole_lines * line_bytes);
    whole_lines += strip.whole_lines;
    if (strip.whole_lines > 0) sink(bytes.first(whole_bytes), strip.whole_lines, true);
    if (whole_bytes == bytes.size()) return;
    sink(bytes.subspan(whole_bytes), lines_of(part) - strip.whole_lines, false);
  };
  work_in_order((window.lines + lines_at_once - 1) / lines_at_once, workers, read, take);
  return whole_lines;
}

}  // namespace gridkit
