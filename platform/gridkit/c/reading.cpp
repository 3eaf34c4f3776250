#include "gridkit/c/reading.h"

#include <memory>
#include <string>

namespace gridkit::c {

SampleWindow window_of(const gridkit_window* given) {
  require(given, "window");
  const gridkit_window window = taken(given, "window");
  const auto step = [](std::int64_t wanted) { return wanted == 0 ? 1 : wanted; };
  return {window.line,    window.sample,          window.lines,
          window.samples, step(window.line_step), step(window.sample_step)};
}

SampleTarget target_of(const gridkit_target* given) {
  require(given, "target");
  const gridkit_target target = taken(given, "target");
  require(target.data, "the target's data");
  return {target.data, target.line_stride, target.sample_stride};
}

std::size_t threads_of(std::int32_t threads) {
  constexpr std::int32_t most = 256;
  if (threads == -1) return usual_threads();
  if (threads >= 0 && threads <= most) return threads == 0 ? 1 : static_cast<std::size_t>(threads);
  throw Fault(gridkit_WrongUse, "threads is " + std::to_string(threads) +
                                    "; it is -1 for one a processor, or 0 to " +
                                    std::to_string(most));
}

ReadManner manner_of(const gridkit_read_options& options, std::int64_t lines) {
  ReadManner manner;
  manner.threads = threads_of(options.threads);
  if (options.progress == nullptr) return manner;
  manner.advance = [progress = options.progress, context = options.context, lines,
                    done = std::make_shared<std::int64_t>(0)](std::int64_t more) {
    *done += more;
    return progress(context, *done, lines) == 0;
  };
  return manner;
}

}  // namespace gridkit::c
