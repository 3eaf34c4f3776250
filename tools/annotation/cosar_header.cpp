#include "tools/annotation/cosar_header.h"

#include <algorithm>
#include <array>
#include <limits>

namespace {

constexpr std::size_t header_bytes = 48;
constexpr std::size_t mark_offset = 28;
constexpr std::size_t mark_bytes = 4;
constexpr std::size_t most_bursts = 10000;

using Bytes = std::array<char, header_bytes>;

std::uint32_t word(const Bytes& bytes, std::size_t index) {
  std::uint32_t value = 0;
  for (std::size_t i = 0; i < 4; ++i) {
    value = value << 8U | static_cast<unsigned char>(bytes[4 * index + i]);
  }
  return value;
}

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
    const std::string mark = mark_in(bytes, count);
    if (header.bursts.empty()) header.mark = mark;
    if (count < header_bytes || mark != "CSAR") break;
    CosarBurst burst;
    burst.low_bytes = word(bytes, 0);
    burst.samples = word(bytes, 2);
    burst.lines = word(bytes, 3);
    burst.record_bytes = word(bytes, 5);
    burst.records = word(bytes, 6);
    burst.version = word(bytes, 8);
    header.bursts.push_back(burst);
    header.end = sum(header.end, burst.bytes());
    if (burst.bytes() < header_bytes) break;
  }
  return header;
}
