#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <span>

// How a COSAR file lies: a row of bursts, each a row of records of one width, first four of
// annotation and then one a line. A line's record begins with two words, its first and last valid
// sample, and then has its samples of I and Q, 16 bits each. All is big-endian.
namespace cosar {

inline constexpr std::uint32_t annotation_records = 4;
inline constexpr std::uint32_t sample_bytes = 4;
inline constexpr std::uint32_t head_samples = 2;  // the words ahead of a line's samples
inline constexpr std::uint32_t head_bytes = head_samples * sample_bytes;

// Bytes of a record that holds this many samples and nothing more.
constexpr std::uint64_t record_bytes(std::uint64_t samples) {
  return sample_bytes * (samples + head_samples);
}

// What the twelve words tell that a burst begins with: bytes in the burst (the low 32 bits of the
// count), relative index of the first range sample, range samples, azimuth lines, the burst's
// number, bytes of a record, records, the letters "CSAR", the format's version, and more that
// nobody needs here.
inline constexpr std::size_t header_bytes = 48;
inline constexpr std::size_t mark_offset = 28;
inline constexpr const char* mark = "CSAR";
inline constexpr std::size_t mark_bytes = 4;
inline constexpr std::uint32_t integers = 1;     // version whose samples are integers
inline constexpr std::uint32_t half_floats = 2;  // and that of half-precision floats

struct BurstHeader {
  std::uint32_t low_bytes = 0;
  std::uint32_t samples = 0;
  std::uint32_t lines = 0;
  std::uint32_t record_bytes = 0;
  std::uint32_t records = 0;
  std::uint32_t version = 0;  // such as `integers`

  std::uint64_t bytes() const { return std::uint64_t{record_bytes} * records; }
};

// Nothing where the mark is not in its place. Whether the numbers fit together is not looked at.
inline std::optional<BurstHeader> burst_header(std::span<const char, header_bytes> bytes) {
  if (std::memcmp(bytes.data() + mark_offset, mark, mark_bytes) != 0) return std::nullopt;
  const auto word = [&](std::size_t index) {
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < 4; ++i) {
      value = value << 8U | static_cast<unsigned char>(bytes[4 * index + i]);
    }
    return value;
  };
  return BurstHeader{word(0), word(2), word(3), word(5), word(6), word(8)};
}

}  // namespace cosar
