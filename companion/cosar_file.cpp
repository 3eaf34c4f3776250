#include "companion/cosar_file.h"

#include <array>
#include <cstddef>
#include <optional>

#include "companion/failure.h"
#include "image/cosar_layout.h"

namespace companion {

namespace {

// The header of the burst at the offset, if there is one.
std::optional<cosar::BurstHeader> read_header(const CosarFile& cosar, std::int64_t offset) {
  std::array<char, cosar::header_bytes> bytes{};
  gke_Report* report = nullptr;
  const std::int64_t got =
      gkf_SharedRead(cosar.file.get(), bytes.data(), std::int64_t{sizeof bytes}, offset, &report);
  if (got < 0) {
    throw Failure(gkc_CannotRead, cosar.path,
                  "cannot be read at byte " + std::to_string(offset) + ": " + take_report(report));
  }
  return got == std::int64_t{sizeof bytes} ? cosar::burst_header(bytes) : std::nullopt;
}

// The burst that a header tells of, and in `end` where the next one begins.
CosarBurst burst_of(const CosarFile& cosar, const cosar::BurstHeader& header, std::int64_t offset,
                    std::int64_t& end) {
  const auto& [low_bytes, samples, lines, record, records, version] = header;
  const auto fail = [&](const std::string& fault) {
    throw Failure(gkc_BadImage, cosar.path,
                  "the header of burst " + std::to_string(cosar.bursts.size() + 1) + ", at byte " +
                      std::to_string(offset) + ": " + fault);
  };
  if (version != cosar::integers && version != cosar::half_floats) {
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
  std::int64_t next = 0;
  for (std::int64_t at = 0; const auto header = read_header(cosar, at); at = next) {
    if (cosar.bursts.size() == most_bursts) {
      throw Failure(gkc_BadImage, path, "has more than " + std::to_string(most_bursts) + " bursts");
    }
    cosar.bursts.push_back(burst_of(cosar, *header, at, next));
  }
  if (cosar.bursts.empty()) {
    throw Failure(gkc_BadImage, path, "is no COSAR file: \"CSAR\" does not stand at byte 28");
  }
  return cosar;
}

}  // namespace companion
