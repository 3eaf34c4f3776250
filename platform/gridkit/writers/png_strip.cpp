#include "gridkit/writers/png_strip.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <limits>
#include <new>

#include <zlib.h>

#include "gridkit/error.h"

namespace gridkit {

namespace {

// How bytes of a line are stored; the numbers are the format's.
enum class Filter : std::uint8_t { as_is = 0, from_left = 1, from_above = 2 };
constexpr std::array filters = {Filter::as_is, Filter::from_left, Filter::from_above};

constexpr std::size_t looked_at = 8;  // one line of so many tells which filter serves

using Bytes = std::span<const std::uint8_t>;

// Samples as the format wants them, one line after the other.
std::vector<std::uint8_t> ordered(const PngStrip& strip) {
  std::vector<std::uint8_t> bytes(strip.lines.size());
  if (strip.type == SampleType::u8) {
    std::memcpy(bytes.data(), strip.lines.data(), bytes.size());
    return bytes;
  }
  const unsigned shift = strip.type == SampleType::s16 ? 0x8000U : 0U;
  for (std::size_t i = 0; i < bytes.size(); i += 2) {
    std::uint16_t value = 0;
    std::memcpy(&value, &strip.lines[i], sizeof value);
    const unsigned shifted = value + shift;
    bytes[i] = static_cast<std::uint8_t>((shifted >> 8U) & 0xFFU);
    bytes[i + 1] = static_cast<std::uint8_t>(shifted & 0xFFU);
  }
  return bytes;
}

void subtract(Bytes from, Bytes what, std::uint8_t* difference) {
  for (std::size_t i = 0; i < from.size(); ++i) {
    difference[i] = static_cast<std::uint8_t>(from[i] - what[i]);
  }
}

// Stores a line, one byte for the filter and the line's own number of bytes.
void store(Filter filter, Bytes line, Bytes above, std::size_t sample, std::uint8_t* stored) {
  *stored++ = static_cast<std::uint8_t>(filter);
  switch (filter) {
    case Filter::as_is:
      std::copy(line.begin(), line.end(), stored);
      return;
    case Filter::from_left:
      std::copy_n(line.begin(), sample, stored);
      return subtract(line.subspan(sample), line.first(line.size() - sample), stored + sample);
    case Filter::from_above:
      return subtract(line, above, stored);
  }
}

// How many bits the bytes need when each is coded by how often it comes.
double information(const std::array<std::uint32_t, 256>& counts) {
  double total = 0;
  double bits = 0;
  for (const double count : counts) {
    if (count == 0) continue;
    total += count;
    bits -= count * std::log2(count);
  }
  return total > 0 ? bits + total * std::log2(total) : 0;
}

Filter best_filter(Bytes bytes, std::size_t line_bytes, std::size_t sample) {
  const std::size_t lines = bytes.size() / line_bytes;
  std::vector<std::uint8_t> stored(line_bytes + 1);
  Filter best = Filter::as_is;
  double least = std::numeric_limits<double>::infinity();
  for (const Filter filter : filters) {
    std::array<std::uint32_t, 256> counts{};
    // The first line has none above it, so the look begins with the second where there is one.
    for (std::size_t i = std::min<std::size_t>(1, lines - 1); i < lines; i += looked_at) {
      const Bytes above = bytes.subspan((i == 0 ? 0 : i - 1) * line_bytes, line_bytes);
      store(filter, bytes.subspan(i * line_bytes, line_bytes), above, sample, stored.data());
      for (const std::uint8_t byte : stored) ++counts[byte];
    }
    const double bits = information(counts);
    if (bits >= least) continue;
    least = bits;
    best = filter;
  }
  return best;
}

std::vector<std::uint8_t> filtered(Bytes bytes, std::size_t line_bytes, std::size_t sample) {
  const std::size_t lines = bytes.size() / line_bytes;
  const Filter filter = best_filter(bytes, line_bytes, sample);
  std::vector<std::uint8_t> result(bytes.size() + lines);
  for (std::size_t i = 0; i < lines; ++i) {
    const bool has_none_above = i == 0;  // within the strip
    const Bytes line = bytes.subspan(i * line_bytes, line_bytes);
    const Bytes above = bytes.subspan((has_none_above ? 0 : i - 1) * line_bytes, line_bytes);
    const bool differs = has_none_above && filter == Filter::from_above;
    store(differs ? Filter::from_left : filter, line, above, sample, &result[i * (line_bytes + 1)]);
  }
  return result;
}

// Without the head and the end of the zlib format, which belong to the whole stream.
std::vector<std::byte> deflated(Bytes bytes, bool is_last) {
  constexpr int fastest = 1;
  constexpr int no_head = -15;
  constexpr int largest_state = 9;
  z_stream stream{};
  if (deflateInit2(&stream, fastest, Z_DEFLATED, no_head, largest_state, Z_RLE) != Z_OK) {
    throw std::bad_alloc();
  }
  struct End {
    z_stream* stream;
    ~End() { deflateEnd(stream); }
  } const end{&stream};
  constexpr std::size_t room_for_the_mark = 16;  // by which a piece ends on a whole byte
  std::vector<std::byte> result(deflateBound(&stream, bytes.size()) + room_for_the_mark);
  stream.next_in = const_cast<Bytef*>(bytes.data());
  stream.avail_in = static_cast<uInt>(bytes.size());
  stream.next_out = reinterpret_cast<Bytef*>(result.data());
  stream.avail_out = static_cast<uInt>(result.size());
  const int done = deflate(&stream, is_last ? Z_FINISH : Z_FULL_FLUSH);
  if (done != (is_last ? Z_STREAM_END : Z_OK) || stream.avail_in != 0 || stream.avail_out == 0) {
    throw Error("a picture's lines cannot be compressed");
  }
  result.resize(stream.total_out);
  return result;
}

}  // namespace

PngPiece compress(const PngStrip& strip) {
  const std::vector<std::uint8_t> bytes =
      filtered(ordered(strip), strip.line_bytes, sample_size(strip.type));
  return {deflated(bytes, strip.is_last),
          static_cast<std::uint32_t>(adler32_z(1, bytes.data(), bytes.size())), bytes.size()};
}

}  // namespace gridkit
