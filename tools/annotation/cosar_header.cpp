#include "tools/annotation/cosar_header.h"

#include <algorithm>
#include <array>
#include <limits>

namespace {

using cosar::header_bytes;
using cosar::mark_bytes;
using cosar::mark_offset;

constexpr std::size_t most_bursts = 10000;

using Bytes = std::array<char, header_bytes>;

// How many of a header's bytes stand at the offset.
std::size_t read_at(std::istream& file, std::uint64_t offset, Bytes& bytes) {
  file.clear();
  file.seekg(static_cast<std::streamoff>(offset));
  file.read(bytes.data(), std::streamsize{header_bytes});
  return static_cast<std::size_t>(std::max<std::streamsize>(file.gcount(), 0));
}

std::string mark_in(const Bytes& bytes, std::size_t count) {
  if (count <= mark_offset) return {};
  return {bytes.data() + mark_offset, std::min(mark_bytes, count - mark_offset)};
}

std::uint64_t sum(std::uint64_t a, std::uint64_t b) {
  constexpr auto most = std::numeric_limits<std::uint64_t>::max();
  return b > most - a ? most : a + b;
}

}  // namespace

CosarHeader read_cosar_header(std::istream& file, std::uint64_t file_bytes) {
  CosarHeader header;
  while (header.bursts.size() < most_bursts && header.end < file_bytes) {
    Bytes bytes{};
    const std::size_t count = read_at(file, header.end, bytes);
    if (header.bursts.empty()) header.mark = mark_in(bytes, count);
    const auto burst = cosar::burst_header(bytes);
    if (count < header_bytes || !burst) break;
    header.bursts.push_back(*burst);
    header.end = sum(header.end, burst->bytes());
    if (burst->bytes() < header_bytes) break;
  }
  return header;
}
