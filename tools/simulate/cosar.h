#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tools/simulate/options.h"
#include "tools/simulate/synthesis.h"

namespace simulate {

// COSAR, all numbers big-endian: a row of bursts. Each burst is a row of records of one width: four
// of annotation, then one a line: first and last valid sample (from 1), then I and Q of each
// sample, 16-bit integers or half-precision floats. Samples outside the valid ones are zero.
//
// First record: bytes in burst (its low 32 bits), range sample relative index, range samples,
// azimuth samples, burst index, bytes per record, records, the letters "CSAR", the format's version
// (1: integers, 2: half-precision floats), the oversampling factor, and, as 64-bit floating number,
// the inverse SPECAN scaling rate, zero where no SPECAN processing took place. Second to fourth,
// after two words of fill, for each range sample: relative index of the burst's first line in the
// scene, first and last line of the burst in which the sample is valid, 0 for none; indices count
// from 1.

// A burst's place: its first line in the scene, from 0, and how many follow it there with it.
struct Burst {
  std::int32_t first_line = 0;
  std::int32_t lines = 0;
};

// First and last valid sample of a line, from 1.
struct ValidSamples {
  std::uint32_t first = 0;
  std::uint32_t last = 0;

  bool contain(std::uint32_t sample) const { return first <= sample && sample <= last; }
};

// How a file is laid out.
struct CosarLayout {
  std::int32_t samples = 0;
  std::vector<Burst> bursts;
  CosarOptions kind;

  std::uint64_t record_bytes() const;
  std::uint64_t burst_bytes(std::size_t burst) const;
  std::uint64_t offset_of(std::size_t burst) const;  // from the file's start
  std::uint64_t file_bytes() const { return offset_of(bursts.size()); }

  // Of a burst's line, from 0. The first samples of a line are not valid, and more of them on some
  // lines than on others: line r begins with sample r % 4 + 1. A taper makes the valid area lean:
  // so many samples more are not valid at the near end of the first line and the far end of the
  // last, and ever fewer towards the other.
  ValidSamples valid_samples(std::size_t burst, std::int32_t line) const;
};

// Throws std::invalid_argument for what an image of that size cannot be.
void check_cosar(const CosarOptions& kind, std::int32_t lines, std::int32_t samples);

// One burst holds all lines. Of several, each begins where its equal share of the scene begins and
// ends an eighth of a share after the next one's begin, so that neighbours overlap; the last ends
// with the scene.
CosarLayout lay_out_cosar(std::int32_t lines, std::int32_t samples, const CosarOptions& kind);

// Written line by line. Bytes of records that are wider than their samples are 0x55, so that a
// reader who takes them for samples sees it. Throws std::runtime_error when the file cannot be
// written.
void write_cosar(const std::string& path, const CosarLayout& layout, const Synthesis& synthesis);

// Such a file of the right size whose samples are zeros, taking hardly any room on disk.
void write_sparse_cosar(const std::string& path, const CosarLayout& layout);

}  // namespace simulate
