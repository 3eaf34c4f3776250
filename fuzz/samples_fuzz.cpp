// COSAR files through the companion: the headers of their bursts, windows of any place, step and
// size, and the marks of valid samples. The input begins with 16 bytes that choose windows.

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <vector>

#include "companion/cosar_file.h"
#include "companion/cosar_reader.h"
#include "companion/failure.h"
#include "companion/window.h"
#include "fuzz/bytes.h"
#include "fuzz/expect.h"
#include "fuzz/memory_file.h"

namespace {

using companion::CosarBurst;
using companion::CosarFile;
using companion::Failure;
using companion::Progress;

constexpr std::uint32_t untouched = 0xC0FFEE11;

// The sample as the bytes of the file have it, in this machine's order.
std::uint32_t sample_in(std::string_view file, std::uint64_t offset) {
  unsigned char bytes[4];
  std::memcpy(bytes, file.data() + offset, sizeof bytes);
  const std::uint16_t halves[] = {static_cast<std::uint16_t>(bytes[0] << 8 | bytes[1]),
                                  static_cast<std::uint16_t>(bytes[2] << 8 | bytes[3])};
  std::uint32_t sample = 0;
  std::memcpy(&sample, halves, sizeof sample);
  return sample;
}

void read_window(const CosarFile& cosar, const CosarBurst& burst, std::string_view file,
                 gkc_Window window) {
  window.lines = std::min<std::int64_t>(
      window.lines, (burst.lines - 1 - window.first_line) / window.line_step + 1);
  window.samples = std::min<std::int64_t>(
      window.samples, (burst.samples - 1 - window.first_sample) / window.sample_step + 1);
  std::vector<std::uint32_t> target(static_cast<std::size_t>(window.lines * window.samples),
                                    untouched);
  window.target = target.data();
  window.line_stride = 4 * window.samples;
  window.sample_stride = 4;
  Progress progress;
  bool failed = false;
  try {
    companion::read_cosar(cosar, burst,
                          companion::checked_window(&window, "image", burst.lines, burst.samples),
                          progress);
  } catch (const Failure& failure) {
    failed = true;
    expect(failure.code == gkc_CutShort, "a file in memory can only end early");
    expect(failure.image_line == window.first_line + progress.lines * window.line_step,
           "the line that failed is told");
  }
  expect(failed == (progress.lines < window.lines), "all lines came, or an error");
  for (std::int64_t k = 0; k < window.lines * window.samples; ++k) {
    const std::int64_t line = k / window.samples;
    const std::int64_t sample = k % window.samples;
    const bool came =
        line < progress.lines || (line == progress.lines && sample < progress.samples);
    const auto offset = static_cast<std::uint64_t>(
        burst.sample_offset(window.first_line + line * window.line_step) +
        4 * (window.first_sample + sample * window.sample_step));
    expect(!came || offset + 4 <= file.size(), "no sample comes from past the file's end");
    expect(target[static_cast<std::size_t>(k)] == (came ? sample_in(file, offset) : untouched),
           "a sample is the file's, or its place is as it was");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Bytes bytes(data, size);
  std::uint32_t choice[4];
  for (std::uint32_t& number : choice) number = bytes.number();
  const std::string_view content = bytes.rest();
  const MemoryFile file(content);
  try {
    const CosarFile cosar = companion::open_cosar(file.path());
    expect(!cosar.bursts.empty(), "an open file has a burst");
    std::int64_t end = 0;
    for (const CosarBurst& burst : cosar.bursts) {
      expect(burst.offset >= end, "bursts do not overlap");
      end = burst.record_offset(burst.lines);
      expect(end > burst.offset, "a burst ends after it begins");
    }
    const CosarBurst& burst = cosar.bursts[choice[0] % cosar.bursts.size()];
    const auto lines = static_cast<std::uint64_t>(burst.lines);
    const auto samples = static_cast<std::uint64_t>(burst.samples);
    gkc_Window window{};
    window.size = sizeof window;
    window.first_line = static_cast<std::int64_t>(choice[0] / 7 % lines);
    window.first_sample = static_cast<std::int64_t>(choice[1] % samples);
    window.lines = 1 + choice[2] % 61;
    window.samples = 1 + choice[2] / 61 % 67;
    window.line_step = 1 + choice[3] % 5;
    window.sample_step = 1 + choice[3] / 5 % 1000;
    read_window(cosar, burst, content, window);
    std::vector<gkc_ValidSamples> valid(
        static_cast<std::size_t>(std::min<std::uint64_t>(lines, 9)));
    Progress progress;
    companion::read_valid_samples(cosar, burst, 0, std::ssize(valid), valid.data(), progress);
    for (const auto& [first, last] : valid) {
      expect(first >= 0 && last < burst.samples, "valid samples lie in their line");
    }
  } catch (const Failure& failure) {
    expect(failure.code == gkc_BadImage || failure.code == gkc_CutShort, "the file is at fault");
    expect(!failure.message.empty(), "a failure has words");
  }
  return 0;
}
