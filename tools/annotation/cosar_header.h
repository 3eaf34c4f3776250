#pragma once

#include <cstdint>
#include <istream>
#include <string>
#include <vector>

#include "image/cosar_layout.h"

// What a COSAR file says of itself, as it lies (image/cosar_layout.h).
struct CosarHeader {
  // No burst: the file does not begin with a burst's annotation. At most 10,000 are looked at.
  std::vector<cosar::BurstHeader> bursts;
  std::string mark;  // found where the first burst has "CSAR"; shorter where the file ends
  // Where the last of the bursts ends by its own account: behind the file's end when the file was
  // cut off, ahead of it when something else follows.
  std::uint64_t end = 0;
};

// Goes from burst to burst through a file of `file_bytes` bytes and reads the header of each. A
// file that cannot be read looks as if it ended there.
CosarHeader read_cosar_header(std::istream& file, std::uint64_t file_bytes);
