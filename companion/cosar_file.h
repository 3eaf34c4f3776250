#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "gridkit/shared_file.h"

namespace companion {

struct CloseShared {
  void operator()(gkf_SharedFile* file) const { gkf_SharedClose(file); }
};
using SharedFile = std::unique_ptr<gkf_SharedFile, CloseShared>;

// Where a burst lies, by its own header. Everything in it lies at places below 2^63.
struct CosarBurst {
  std::int64_t offset = 0;        // of its first byte in the file
  std::int64_t record_bytes = 0;  // at least what its samples take
  std::int64_t lines = 0;         // at least 1
  std::int64_t samples = 0;       // of a line, at least 1
  std::uint32_t version = 0;      // 1: integers, 2: half-precision numbers

  // The byte of a line's record, and of its first sample.
  std::int64_t record_offset(std::int64_t line) const;
  std::int64_t sample_offset(std::int64_t line) const;
};

// An open COSAR file and its bursts, at least one. The headers' own words decide where bursts,
// lines and samples lie. That the file holds what they promise is not supposed: reads tell where it
// ends. What follows the last burst and is no burst is none of its business.
struct CosarFile {
  std::string path;
  SharedFile file;
  std::vector<CosarBurst> bursts;
};

inline constexpr std::size_t most_bursts = 10000;

// Opens the file and goes from burst to burst. Throws Failure: a file that does not open, one that
// does not begin with a burst, and a header whose numbers do not fit together.
CosarFile open_cosar(const std::string& path);

}  // namespace companion
