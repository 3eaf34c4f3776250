#pragma once

#include <cstdint>

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

}  // namespace cosar
