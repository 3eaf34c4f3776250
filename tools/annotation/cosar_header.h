#pragma once

#include <cstdint>
#include <istream>
#include <string>
#include <vector>

// What a COSAR file says of itself. The file is a row of bursts; each burst is a row of records of
// one width: four of annotation, the first of which is read here, then one a line. The first
// record begins with twelve words, big-endian: bytes in the burst (the low 32 bits of the count),
// relative index of the first range sample, range samples, azimuth lines, the burst's number,
// bytes of a record, records, the letters "CSAR", the format's version, which tells the type of the
// samples, and more that nobody needs here.

inline constexpr std::uint32_t cosar_annotation_records = 4;
inline constexpr std::uint32_t cosar_head_samples = 2;  // words ahead of a line's samples
inline constexpr std::uint32_t cosar_sample_bytes = 4;  // 16 bits of I, 16 bits of Q
inline constexpr std::uint32_t cosar_integers = 1;      // version whose samples are integers
inline constexpr std::uint32_t cosar_half_floats = 2;   // and that of half-precision floats

// Bytes of a record that holds this many samples and nothing more.
constexpr std::uint64_t cosar_record_bytes(std::uint64_t samples) {
  return cosar_sample_bytes * (samples + cosar_head_samples);
}

struct CosarBurst {
  std::uint32_t low_bytes = 0;
  std::uint32_t samples = 0;
  std::uint32_t lines = 0;
  std::uint32_t record_bytes = 0;
  std::uint32_t records = 0;
  std::uint32_t version = 0;  // such as cosar_integers

  std::uint64_t bytes() const { return std::uint64_t{record_bytes} * records; }
};

struct CosarHeader {
  // No burst: the file does not begin with a burst's annotation. At most 10,000 are looked at.
  std::vector<CosarBurst> bursts;
  std::string mark;  // found where the first burst has "CSAR"; shorter where the file ends
  // Where the last of the bursts ends by its own account: behind the file's end when the file was
  // cut off, ahead of it when something else follows.
  std::uint64_t end = 0;
};

// Goes from burst to burst through a file of `file_bytes` bytes and reads 48 bytes of each. A file
// that cannot be read looks as if it ended there.
CosarHeader read_cosar_header(std::istream& file, std::uint64_t file_bytes);
