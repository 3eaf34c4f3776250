#include "image/complex_reader.h"

#include <algorithm>
#include <cstddef>
#include <memory>

#include "gridkit/memory.h"
#include "image/conversion.h"
#include "record/report_frame.h"

namespace {

constexpr std::uint32_t sample_bytes = 4;
constexpr std::uint32_t head_samples = 2;        // of each line's record
constexpr std::uint32_t annotation_records = 4;  // at the start of the file

// The block size is a preference, which may hold anything: a buffer of 2 GiB or more is refused
// like one that there is no memory for.
constexpr std::size_t most_items = INT32_MAX / sizeof(std::int16_t);

template <class T>
struct heap_deleter {
  void operator()(T* block) const { gkm_HeapFree(block); }
};
template <class T>
using heap_array = std::unique_ptr<T[], heap_deleter<T>>;

template <class T>
heap_array<T> allocate(std::size_t count) {
  return heap_array<T>(static_cast<T*>(gkm_HeapMalloc(count * sizeof(T))));
}

// Byte of a sample, as the unsigned 32-bit product that the format's readers agreed on; offsets
// grow past 32 bits only from line to line within a block.
std::uint32_t start_offset(const TsxFile& file, std::int32_t line, std::int32_t column) {
  const auto record = static_cast<std::uint32_t>(file.width) + head_samples;
  const auto records = static_cast<std::uint32_t>(line) + annotation_records;
  return sample_bytes * (records * record + head_samples + static_cast<std::uint32_t>(column));
}

// The range test, kept as it is: it takes no account of annotation records and line heads, so
// blocks that start near the bottom are refused although the file holds them.
bool is_outside(const TsxFile& file, std::uint32_t start) {
  const auto width = static_cast<std::uint32_t>(file.width);
  const std::uint32_t line_bytes = sample_bytes * width;
  const std::uint32_t image_bytes = line_bytes * static_cast<std::uint32_t>(file.height);
  // In 64 bits, so that a sum beyond 32 counts as outside.
  const std::uint64_t end = std::uint64_t{start} + line_bytes;
  return end > image_bytes;
}

// The working buffers of one block of w by h pixels.
struct Block {
  std::size_t width;
  std::size_t height;
  std::size_t pixels;  // width x height
  heap_array<std::int16_t> line;
  heap_array<std::int16_t> i;
  heap_array<std::int16_t> q;
  heap_array<std::uint16_t> result;

  Block(std::size_t w, std::size_t h) : width(w), height(h), pixels(w * h) {
    // Lines stand h apart in the planes, not w. Blocks are square; were they not, a plane would
    // still hold its last line.
    const std::size_t plane = h == 0 ? 0 : std::max(pixels, (h - 1) * h + w);
    if (std::max(plane, 2 * w) > most_items) return;
    line = allocate<std::int16_t>(2 * w);
    i = allocate<std::int16_t>(plane);
    q = allocate<std::int16_t>(plane);
    result = allocate<std::uint16_t>(plane);
    if (allocated() && !is_square()) clear(0, plane);
  }
  bool allocated() const {
    return line != nullptr && i != nullptr && q != nullptr && result != nullptr;
  }
  // What no line fills converts to pixels of 0, and not to what the heap held before. The lines of
  // a square block fill it from the start without a gap, so only what comes behind a short read is
  // to be cleared; other blocks are cleared from the start.
  void clear_unread(std::size_t from, std::size_t until) {
    if (is_square() && from < until) clear(from, until);
  }

 private:
  bool is_square() const { return width == height; }
  void clear(std::size_t from, std::size_t until) {
    std::fill(i.get() + from, i.get() + until, std::int16_t{0});
    std::fill(q.get() + from, q.get() + until, std::int16_t{0});
  }
};

enum class Outcome { complete, no_data, seek_failed };

// Reads the block's lines into the planes; `converted` is the number of samples to convert.
Outcome read_lines(gkf_Stream* stream, std::int64_t offset, std::int64_t line_step, Block& block,
                   std::size_t* converted) {
  *converted = block.pixels;
  for (std::size_t j = 0; j < block.height; ++j, offset += line_step) {
    if (gkf_fseeko(stream, offset, 0) != 0) return Outcome::seek_failed;
    const std::size_t items = 2 * block.width;
    const std::size_t got = gkf_fread(block.line.get(), 2, items, stream);
    const std::size_t p = j * block.height;
    if (got < items) {
      if (gkf_feof(stream) != 0) return Outcome::no_data;
      // A read that came short elsewhere: its item count becomes the width and the place reached
      // the height of what is converted, never more than the block holds.
      *converted = std::min(got * p, block.pixels);
      block.clear_unread(p, *converted);
      return Outcome::complete;
    }
    tsx_SplitLine(block.line.get(), &block.i[p], &block.q[p], block.width);
  }
  return Outcome::complete;
}

}  // namespace

void tsx_ReadLineComplex(TsxLayer* layer, std::int32_t layerIndex, std::int32_t firstColumn,
                         void** pixelData, std::int32_t firstLine, gke_Report** err) {
  static const char* const function_word = "tsx_ReadLineComplex";
  ReportFrame frame(function_word, err);
  const TsxFile& file = *layer->file;
  Block block(static_cast<std::size_t>(std::max(file.blockWidth, 0)),
              static_cast<std::size_t>(std::max(file.blockHeight, 0)));
  if (!block.allocated()) {
    frame.report("No memory for block buffers");
    return;
  }
  const std::uint32_t start = start_offset(file, firstLine, firstColumn);
  if (is_outside(file, start)) {
    *pixelData = nullptr;
    return;
  }
  const std::int64_t line_step = std::int64_t{sample_bytes} * file.width + 8;
  std::size_t converted = 0;
  switch (read_lines(cosar_file(file, layerIndex / 2), start, line_step, block, &converted)) {
    case Outcome::seek_failed:
      frame.report("gkf_fseeko failed");
      return;
    case Outcome::no_data:
      *pixelData = nullptr;
      return;
    case Outcome::complete:
      break;
  }
  const auto convert = layerIndex % 2 == 0 ? tsx_ConvertMagnitude : tsx_ConvertPhase;
  convert(block.i.get(), block.q.get(), block.result.get(), converted);
  gkm_MemCpy(*pixelData, block.result.get(), 2 * converted);
}
