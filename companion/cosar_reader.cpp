#include "companion/cosar_reader.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <vector>

#include "companion/failure.h"
#include "conversion/conversion.h"
#include "image/cosar_layout.h"

namespace companion {

namespace {

constexpr std::int64_t sample_bytes = cosar::sample_bytes;

// What is read at once: enough for a call's own cost not to count, and little enough to be in the
// second-level cache still when it is turned round and delivered.
constexpr std::int64_t bytes_at_once = std::int64_t{64} * 1024;

// Bytes that nobody wants cost less to read, up to so many in a row, than a call of its own for
// what follows them.
constexpr std::int64_t longest_gap = 2048;

std::string burst_in_words(const CosarFile& file, const CosarBurst& burst) {
  if (file.bursts.size() == 1) return {};
  const auto number = &burst - file.bursts.data() + 1;
  return " of burst " + std::to_string(number);
}

[[noreturn]] void tell_end(const CosarFile& file, const CosarBurst& burst, std::int64_t line) {
  const std::int64_t size = gkf_SharedSize(file.file.get(), nullptr);
  throw Failure(gkc_CutShort, file.path,
                "the file ends at byte " + std::to_string(size) + ", before the end of line " +
                    std::to_string(line) + burst_in_words(file, burst) + ", which has lines 0 to " +
                    std::to_string(burst.lines - 1));
}

// The bytes from the offset on, up to the file's end.
std::int64_t read_bytes(const CosarFile& file, const CosarBurst& burst, std::int64_t line,
                        std::int64_t offset, void* buffer, std::int64_t bytes) {
  gke_Report* report = nullptr;
  const std::int64_t got = gkf_SharedRead(file.file.get(), buffer, bytes, offset, &report);
  if (got >= 0) return got;
  throw Failure(gkc_CannotRead, file.path,
                "line " + std::to_string(line) + burst_in_words(file, burst) +
                    " cannot be read: " + take_report(report));
}

PartLimits limits_for(const gkc_Window& window, std::int64_t sample_step_bytes,
                      std::int64_t line_step_bytes) {
  const std::int64_t line_bytes = (window.samples - 1) * sample_step_bytes + sample_bytes;
  // Samples that lie far apart are read one by one.
  if (sample_step_bytes > longest_gap) return {1, 1};
  if (line_bytes > bytes_at_once) {
    return {1, (bytes_at_once - sample_bytes) / sample_step_bytes + 1};
  }
  if (line_step_bytes - line_bytes > longest_gap) return {1, window.samples};
  return {(bytes_at_once - line_bytes) / line_step_bytes + 1, window.samples};
}

}  // namespace

void read_cosar(const CosarFile& file, const CosarBurst& burst, const gkc_Window& window,
                Progress& progress) {
  const std::int64_t sample_step = window.sample_step * sample_bytes;
  const std::int64_t line_step = window.line_step * burst.record_bytes;
  std::vector<std::uint16_t> halves(bytes_at_once / sizeof(std::uint16_t));
  auto* const bytes = reinterpret_cast<char*>(halves.data());
  const auto read_part = [&](const Part& part, std::int64_t& came) {
    const std::int64_t line = window.first_line + part.line * window.line_step;
    const std::int64_t sample = window.first_sample + part.sample * window.sample_step;
    const std::int64_t line_bytes = (part.samples - 1) * sample_step + sample_bytes;
    const std::int64_t wanted = (part.lines - 1) * line_step + line_bytes;
    const std::int64_t got =
        read_bytes(file, burst, line, burst.sample_offset(line) + sample * sample_bytes,
                   halves.data(), wanted);
    if (got < wanted && part.lines > 1) tell_end(file, burst, line);
    // Every line of the part but a last one that is cut.
    const std::int64_t samples =
        got < wanted ? (got + sample_step - sample_bytes) / sample_step : part.samples;
    for (std::int64_t k = 0; k < part.lines && samples > 0; ++k) {
      char* const from = bytes + k * line_step;
      const std::int64_t halves_of_line = 2 * ((samples - 1) * window.sample_step + 1);
      conversion::from_big_endian(reinterpret_cast<std::uint16_t*>(from),
                                  static_cast<std::size_t>(halves_of_line));
      deliver(window, part.line + k, part.sample, from, samples, sample_bytes);
    }
    came = samples;
    if (got < wanted) tell_end(file, burst, line);
  };
  read_in_parts(window, limits_for(window, sample_step, line_step), progress, read_part);
}

void read_valid_samples(const CosarFile& file, const CosarBurst& burst, std::int64_t first_line,
                        std::int64_t lines, gkc_ValidSamples* valid, Progress& progress) {
  for (; progress.lines < lines; ++progress.lines) {
    const std::int64_t line = first_line + progress.lines;
    unsigned char head[cosar::head_bytes] = {};
    try {
      const std::int64_t got =
          read_bytes(file, burst, line, burst.record_offset(line), head, std::int64_t{sizeof head});
      if (got < std::int64_t{sizeof head}) tell_end(file, burst, line);
    } catch (Failure& failure) {
      failure.image_line = line;
      throw;
    }
    const auto word = [&](std::size_t at) {
      return std::int64_t{head[at]} << 24 | std::int64_t{head[at + 1]} << 16 |
             std::int64_t{head[at + 2]} << 8 | std::int64_t{head[at + 3]};
    };
    // The file counts from 1.
    valid[progress.lines] = {std::max<std::int64_t>(word(0), 1) - 1,
                             std::min(word(4), burst.samples) - 1};
  }
}

}  // namespace companion
