#pragma once

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

// COSAR files of the tests' own, written word by word from the description of the format, so that
// what reads them has another's word.

// The halves of a sample, which can be told from all others near by.
struct PlainSample {
  std::uint16_t i;
  std::uint16_t q;
};

inline PlainSample plain_sample(std::int64_t burst, std::int64_t line, std::int64_t sample) {
  const auto mixed = static_cast<std::uint64_t>(line * 40503 + sample * 9973 + burst * 31337 + 17) *
                     0x9E3779B97F4A7C15U;
  return {static_cast<std::uint16_t>(mixed >> 48), static_cast<std::uint16_t>(mixed >> 32)};
}

struct BurstLayout {
  std::uint32_t lines = 0;
  std::uint32_t samples = 0;
  std::uint32_t padding = 0;  // samples at the end of each record that belong to no image
  std::uint32_t version = 1;
};

// The first words of a burst's header, for tests to falsify.
struct BurstHeader {
  std::uint32_t bytes, first_range_sample, samples, lines, number, record_bytes, records;
  std::string mark = "CSAR";
  std::uint32_t version = 1;
};

inline BurstHeader true_header(const BurstLayout& burst, std::uint32_t number) {
  const std::uint32_t record = 4 * (burst.samples + burst.padding + 2);
  const std::uint32_t records = burst.lines + 4;
  return {record * records, 1,       burst.samples, burst.lines,  number,
          record,           records, "CSAR",        burst.version};
}

class BigEndianFile {
 public:
  explicit BigEndianFile(const std::filesystem::path& path)
      : out_(path, std::ios::binary | std::ios::trunc) {}

  void half(std::uint16_t value) {
    out_.put(static_cast<char>(value >> 8)).put(static_cast<char>(value & 0xFF));
  }
  void word(std::uint32_t value) {
    half(static_cast<std::uint16_t>(value >> 16));
    half(static_cast<std::uint16_t>(value & 0xFFFF));
  }
  void header(const BurstHeader& header) {
    word(header.bytes);
    word(header.first_range_sample);
    word(header.samples);
    word(header.lines);
    word(header.number);
    word(header.record_bytes);
    word(header.records);
    out_ << header.mark;
    word(header.version);
  }
  void zeros(std::int64_t bytes) {
    for (; bytes > 0; --bytes) out_.put('\0');
  }
  bool good() const { return out_.good(); }

 private:
  std::ofstream out_;
};

// Line l has the samples l % 3 + 2 to its last but l % 2 as valid ones, counted from 1.
inline void write_cosar(const std::filesystem::path& path, const std::vector<BurstLayout>& bursts) {
  BigEndianFile file(path);
  for (std::size_t b = 0; b < bursts.size(); ++b) {
    const BurstLayout& burst = bursts[b];
    const BurstHeader header = true_header(burst, static_cast<std::uint32_t>(b + 1));
    file.header(header);
    file.zeros(std::int64_t{header.record_bytes} * 4 - 36);
    for (std::uint32_t l = 0; l < burst.lines; ++l) {
      file.word(l % 3 + 2);
      file.word(burst.samples - l % 2);
      for (std::uint32_t s = 0; s < burst.samples; ++s) {
        const PlainSample sample = plain_sample(static_cast<std::int64_t>(b), l, s);
        file.half(sample.i);
        file.half(sample.q);
      }
      for (std::uint32_t p = 0; p < burst.padding; ++p) file.word(0xDEADBEEF);
    }
  }
  if (!file.good()) throw std::runtime_error(path.string() + " cannot be written");
}
