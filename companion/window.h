#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>

#include "companion/failure.h"
#include "gridkit/companion.h"

namespace companion {

// How far a read has come.
struct Progress {
  std::int64_t lines = 0;    // of the window, delivered whole
  std::int64_t samples = 0;  // of the next line
};

// Where a sample of a window goes.
inline char* place_of(const gkc_Window& window, std::int64_t line, std::int64_t sample) {
  return static_cast<char*>(window.target) + line * window.line_stride +
         sample * window.sample_stride;
}

// The window with steps of 1 where there is nothing to step to. Throws Failure unless its members
// mean something and it lies inside an image of that size.
gkc_Window checked_window(const gkc_Window* window, const std::string& image, std::int64_t lines,
                          std::int64_t samples);

// Copies `count` samples of `sample_bytes` bytes each, one every `sample_step` of the window, to
// their places, the first of them to that line and sample.
void deliver(const gkc_Window& window, std::int64_t line, std::int64_t sample, const char* from,
             std::int64_t count, std::size_t sample_bytes);

// What is read at once: whole lines of the window, or some samples of one line.
struct Part {
  std::int64_t line;
  std::int64_t lines;
  std::int64_t sample;
  std::int64_t samples;
};

// The most that a part may have. Where a window's line has more samples, a part is of one line.
struct PartLimits {
  std::int64_t lines = 1;
  std::int64_t samples = 1;
};

// Reads a window part by part, in order. `read_part(part, came)` delivers a part or throws Failure;
// of a part with one line it may deliver the samples before the fault first, and tells their number
// in `came`. After a part of several lines failed it goes on line by line, so that what can be read
// before the fault is. The Failure that leaves has the image's line in it.
template <class ReadPart>
void read_in_parts(const gkc_Window& window, PartLimits most, Progress& progress,
                   ReadPart read_part) {
  while (progress.lines < window.lines) {
    const std::int64_t samples = std::min(window.samples - progress.samples, most.samples);
    const bool is_whole = samples == window.samples;
    const std::int64_t lines = is_whole ? std::min(window.lines - progress.lines, most.lines) : 1;
    std::int64_t came = 0;
    try {
      read_part(Part{progress.lines, lines, progress.samples, samples}, came);
    } catch (Failure& failure) {
      if (lines > 1) {
        most.lines = 1;
        continue;
      }
      progress.samples += came;
      failure.image_line = window.first_line + progress.lines * window.line_step;
      throw;
    }
    progress.samples += samples;
    if (progress.samples < window.samples) continue;
    progress.lines += lines;
    progress.samples = 0;
  }
}

}  // namespace companion
