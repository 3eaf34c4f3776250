#include "companion/cosar_file.h"

#include <array>
#include <cstddef>
#include <cstring>

#include "companion/failure.h"
#include "image/cosar_layout.h"

namespace companion {

namespace {

// The words of a burst's first record, big-endian. Bytes 28 to 31 are the letters "CSAR".
enum Word : std::size_t {
  word_samples = 2,
  word_lines = 3,
  word_record_bytes = 5,
  word_records = 6,
  word_mark = 7,
  word_version = 8,
  word_count = 9
};
using Header = std::array<unsigned char, 4 * word_count>;

std::uint32_t word(const Header& header, Word index) {
  std::uint32_t value = 0;
  for (std::size_t i = 0; i < 4; ++i) value = value << 8U | header[4 * index + i];
  return value;
}

bool is_burst(const Header& header) {
  return std::memcmp(header.data() + 4 * std::size_t{word_mark}, "CSAR", 4) == 0;
}

// Whether there is a burst's header at the offset.
bool read_header(const CosarFile& cosar, std::int64_t offset, Header& header) {
  gke_Report* report = nullptr;
  const std::int64_t got =
      gkf_SharedRead(cosar.file.get(), header.data(), std::int64_t{sizeof header}, offset, &report);
  if (got < 0) {
    throw Failure(gkc_CannotRead, cosar.path,
                  "cannot be read at byte " + std::to_string(offset) + ": " + take_report(report));
  }
  return got == std::int64_t{sizeof header} && is_burst(header);
}

// The burst that a header tells of, and in `end` where the next one begins.
CosarBurst burst_of(const CosarFile& cosar, const Header& header, std::int64_t offset,
                    std::int64_t& end) {
  const std::uint32_t samples = word(header, word_samples);
  const std::uint32_t lines = word(header, word_lines);
  const std::uint32_t record = word(header, word_record_bytes);
  const std::uint32_t records = word(header, word_records);
  const std::uint32_t version = word(header, word_version);
  const auto fail = [&](const std::string& fault) {
    throw Failure(gkc_BadImage, cosar.path,
                  "the header of burst " + std::to_string(cosar.bursts.size() + 1) + ", at byte " +
                      std::to_string(offset) + ": " + fault);
  };
  if (version != 1 && version != 2) {
    fail("samples of version " + std::to_string(version) +
         "; known are 1, integers of 16 bits, and 2, half-precision numbers");
  }
  if (lines == 0 || samples == 0) {
    fail(std::to_string(lines) + " lines of " + std::to_string(samples) + " samples");
  }
  if (record % cosar::sample_bytes != 0) {
    fail("records of " + std::to_string(record) + " bytes, which are no whole samples of 4");
  }
  if (record < cosar::record_bytes(samples)) {
    fail("records of " + std::to_string(record) + " bytes, but " + std::to_string(samples) +
         " samples a line, which take " + std::to_string(cosar::record_bytes(samples)));
  }
  if (records < std::uint64_t{lines} + cosar::annotation_records) {
    fail(std::to_string(records) + " records, but " + std::to_string(lines) +
         " lines, which with their annotation take " +
         std::to_string(std::uint64_t{lines} + cosar::annotation_records));
  }
  std::int64_t bytes = 0;
  if (__builtin_mul_overflow(std::int64_t{record}, std::int64_t{records}, &bytes) ||
      __builtin_add_overflow(offset, bytes, &end)) {
    fail("it would end beyond byte 2^63");
  }
  return {offset, record, lines, samples, version};
}

}  // namespace

std::int64_t CosarBurst::record_offset(std::int64_t line) const {
  return offset + (cosar::annotation_records + line) * record_bytes;
}

std::int64_t CosarBurst::sample_offset(std::int64_t line) const {
  return record_offset(line) + cosar::head_bytes;
}

CosarFile open_cosar(const std::string& path) {
  gke_Report* report = nullptr;
  CosarFile cosar{path, SharedFile(gkf_SharedOpen(path.c_str(), &report)), {}};
  if (cosar.file == nullptr) {
    Failure failure(gkc_BadImage, take_report(report));
    failure.path = path;
    throw failure;
  }
  Header header{};
  std::int64_t next = 0;
  for (std::int64_t at = 0; read_header(cosar, at, header); at = next) {
    if (cosar.bursts.size() == most_bursts) {
      throw Failure(gkc_BadImage, path, "has more than " + std::to_string(most_bursts) + " bursts");
    }
    cosar.bursts.push_back(burst_of(cosar, header, at, next));
  }
  if (cosar.bursts.empty()) {
    throw Failure(gkc_BadImage, path, "is no COSAR file: \"CSAR\" does not stand at byte 28");
  }
  return cosar;
}

}  // namespace companion
