#include "image/complex_reader.h"

#include <algorithm>
#include <cstddef>
#include <memory>

#include "conversion/conversion.h"
#include "gridkit/memory.h"
#include "image/cosar_layout.h"
#include "record/report_frame.h"

namespace {

using cosar::annotation_records;
using cosar::head_samples;
using cosar::sample_bytes;

// The block size is a preference, which may hold anything: a buffer of 2 GiB or more is refused
// like one that there is no memory for.
constexpr std::size_t most_items = INT32_MAX / sizeof(std::int16_t);

template <class T>
struct HeapDeleter {
  void operator()(T* block) const { gkm_HeapFree(block); }
};
template <class T>
using HeapArray = std::unique_ptr<T[], HeapDeleter<T>>;

template <class T>
HeapArray<T> allocate(std::size_t count) {
  return HeapArray<T>(static_cast<T*>(gkm_HeapMalloc(count * sizeof(T))));
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

// Lines are read one by one, but converted several at a time, because a loop over few samples costs
// more to begin than to run. About this many samples are gathered first: their planes take 8 KiB,
// so that they are still in the first cache when they are converted.
constexpr std::size_t samples_at_once = 2048;

// The working buffers of one block of w by h pixels.
struct Block {
  std::size_t width;
  std::size_t height;
  std::size_t pixels;    // width x height
  std::size_t capacity;  // of the sample planes, whole lines
  HeapArray<std::int16_t> line;
  HeapArray<std::int16_t> i;
  HeapArray<std::int16_t> q;
  HeapArray<std::uint16_t> result;

  Block(std::size_t w, std::size_t h) : width(w), height(h), pixels(w * h), capacity(w) {
    // Line j begins at pixel j * h of the result. The host's blocks are square, so that this is
    // j * w; if they were not, the result would have to be long enough for the last line at that
    // place.
    const std::size_t plane = h == 0 ? 0 : std::max(pixels, (h - 1) * h + w);
    if (std::max(plane, 2 * w) > most_items) return;
    if (is_square() && w > 0) capacity = w * std::clamp<std::size_t>(samples_at_once / w, 1, h);
    line = allocate<std::int16_t>(2 * w);
    i = allocate<std::int16_t>(capacity);
    q = allocate<std::int16_t>(capacity);
    result = allocate<std::uint16_t>(plane);
    if (allocated() && !is_square()) std::fill_n(result.get(), plane, std::uint16_t{0});
  }
  bool allocated() const {
    return line != nullptr && i != nullptr && q != nullptr && result != nullptr;
  }
  // Pixels that no line fills are 0, as of a sample of zeros, and not what the heap held before.
  // The lines of a square block fill it from its start without a gap, so only what follows a short
  // read must be cleared; other blocks are cleared when they are made.
  void clear_unread(std::size_t from, std::size_t until) {
    if (is_square() && from < until) std::fill(&result[from], &result[until], std::uint16_t{0});
  }

 private:
  bool is_square() const { return width == height; }
};

using Convert = decltype(&conversion::magnitude);
enum class Outcome { complete, no_data, seek_failed };

// Reads and converts the block's lines; `converted` is the number of pixels that the block gets.
Outcome read_lines(gkf_Stream* stream, std::int64_t offset, std::int64_t line_step, Convert convert,
                   Block& block, std::size_t* converted) {
  *converted = block.pixels;
  std::size_t waiting = 0;  // samples in the planes
  const auto convert_until = [&](std::size_t end) {
    convert(block.i.get(), block.q.get(), &block.result[end - waiting], waiting);
    waiting = 0;
  };
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
      convert_until(p);
      block.clear_unread(p, *converted);
      return Outcome::complete;
    }
    conversion::split_big_endian(block.line.get(), &block.i[waiting], &block.q[waiting],
                                 block.width);
    waiting += block.width;
    if (waiting == block.capacity || j + 1 == block.height) convert_until(p + block.width);
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
  const std::int64_t line_step = std::int64_t{sample_bytes} * file.width + cosar::head_bytes;
  const Convert convert = is_phase(file, layerIndex) ? conversion::phase : conversion::magnitude;
  std::size_t converted = 0;
  switch (read_lines(cosar_file(file, image_of_layer(file, layerIndex)), start, line_step, convert,
                     block, &converted)) {
    case Outcome::seek_failed:
      frame.report("gkf_fseeko failed");
      return;
    case Outcome::no_data:
      *pixelData = nullptr;
      return;
    case Outcome::complete:
      break;
  }
  gkm_MemCpy(*pixelData, block.result.get(), 2 * converted);
}
