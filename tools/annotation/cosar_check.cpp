#include "tools/annotation/cosar_check.h"

#include <algorithm>
#include <cctype>
#include <utility>

namespace {

using Authority = ImageFinding::Authority;

std::string in_bytes(std::uint64_t count) {
  return std::to_string(count) + " bytes";
}

// Anything but letters, digits and blanks as "\x00".
std::string printable(const std::string& text) {
  constexpr const char* digits = "0123456789abcdef";
  std::string shown;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (std::isalnum(byte) != 0 || c == ' ') {
      shown += c;
    } else {
      shown += std::string("\\x") + digits[byte >> 4U] + digits[byte & 15U];
    }
  }
  return shown;
}

// "2, of 300 and 200 lines"
std::string bursts_as_text(const CosarHeader& header) {
  constexpr std::size_t most_shown = 8;
  const std::size_t count = header.bursts.size();
  std::string text = std::to_string(count) + ", of ";
  for (std::size_t i = 0; i < count && i < most_shown; ++i) {
    if (i > 0) text += i + 1 == count ? " and " : ", ";
    text += std::to_string(header.bursts[i].lines);
  }
  return text + (count > most_shown ? ", ... lines" : " lines");
}

std::string version_as_text(std::uint32_t version) {
  const std::string number = "version " + std::to_string(version) + " of the format";
  return version == cosar::half_floats ? "half-precision floats, " + number : number;
}

class Check {
 public:
  Check(const std::string& path, const AnnotatedImages& annotated)
      : path_(path), annotated_(annotated) {}

  // Whether the samples are what readers of the format know.
  void with_format(const cosar::BurstHeader& burst, const std::string& which) {
    if (burst.version == cosar::integers) return;
    add(std::string(sample_type_fact) + which, version_as_text(burst.version),
        "16-bit integers, version 1", Authority::format);
  }

  // Whether the annotation has the file right.
  void with_annotation(const CosarHeader& header) {
    const cosar::BurstHeader& burst = header.bursts.front();
    const std::string lines = std::to_string(annotated_.lines);
    const std::string samples = std::to_string(annotated_.samples);
    const std::uint64_t record =
        cosar::record_bytes(static_cast<std::uint64_t>(std::max(annotated_.samples, 0)));
    if (burst.record_bytes != record) {
      add("record width", in_bytes(burst.record_bytes),
          in_bytes(record) + ", for " + samples + " samples a line");
    }
    if (std::int64_t{burst.samples} != annotated_.samples) {
      add("samples a line", std::to_string(burst.samples), samples);
    }
    if (header.bursts.size() > 1) {
      add("bursts", bursts_as_text(header), "1, of " + lines + " lines");
    } else if (std::int64_t{burst.lines} != annotated_.lines) {
      add("lines", std::to_string(burst.lines), lines);
    }
  }

  // Whether a burst's own numbers fit together.
  void with_itself(const cosar::BurstHeader& burst, const std::string& which) {
    if (burst.record_bytes < cosar::record_bytes(burst.samples)) {
      add("record width" + which, in_bytes(burst.record_bytes),
          std::to_string(burst.samples) + " samples a line, which take " +
              in_bytes(cosar::record_bytes(burst.samples)),
          Authority::header);
    }
    const std::uint64_t records = std::uint64_t{burst.lines} + cosar::annotation_records;
    if (burst.records != records) {
      add("records" + which, std::to_string(burst.records),
          std::to_string(burst.lines) + " lines, which with their annotation take " +
              std::to_string(records),
          Authority::header);
    }
    if (burst.low_bytes != static_cast<std::uint32_t>(burst.bytes())) {
      add("byte count" + which, in_bytes(burst.low_bytes),
          std::to_string(burst.records) + " records of " + in_bytes(burst.record_bytes) +
              ", whose count ends in these 32 bits: " +
              std::to_string(static_cast<std::uint32_t>(burst.bytes())),
          Authority::header, false);
    }
  }

  void with_file(const CosarHeader& header, std::uint64_t file_bytes) {
    if (header.end > file_bytes) {
      add("file length", in_bytes(file_bytes), in_bytes(header.end), Authority::header);
    } else if (header.end < file_bytes) {
      add("bytes behind the last burst", std::to_string(file_bytes - header.end), "none",
          Authority::header, false);
    }
  }

  void mark(const CosarHeader& header) {
    add("format mark", header.mark.empty() ? "none" : '"' + printable(header.mark) + '"',
        "\"CSAR\" at byte 28", Authority::format);
  }

  std::vector<ImageFinding> take() { return std::move(findings_); }

 private:
  void add(std::string what, std::string found, std::string expected,
           Authority authority = Authority::annotation, bool serious = true) {
    findings_.push_back(
        {path_, std::move(what), std::move(found), std::move(expected), authority, serious});
  }

  const std::string& path_;
  const AnnotatedImages& annotated_;
  std::vector<ImageFinding> findings_;
};

}  // namespace

std::vector<ImageFinding> check_cosar(const std::string& path, const CosarHeader& header,
                                      std::uint64_t file_bytes, const AnnotatedImages& annotated) {
  Check check(path, annotated);
  if (header.bursts.empty()) {
    check.mark(header);
    return check.take();
  }
  const auto in_burst = [&](std::size_t i) {
    return header.bursts.size() == 1 ? "" : " of burst " + std::to_string(i + 1);
  };
  for (std::size_t i = 0; i < header.bursts.size(); ++i) {
    check.with_format(header.bursts[i], in_burst(i));
  }
  check.with_annotation(header);
  for (std::size_t i = 0; i < header.bursts.size(); ++i) {
    check.with_itself(header.bursts[i], in_burst(i));
  }
  check.with_file(header, file_bytes);
  return check.take();
}

std::string describe_cosar(const CosarHeader& header) {
  const cosar::BurstHeader& burst = header.bursts.front();
  const std::string size = std::to_string(burst.lines) + " lines x " +
                           std::to_string(burst.samples) + " samples, records of " +
                           in_bytes(burst.record_bytes);
  const std::size_t count = header.bursts.size();
  if (count == 1) return "COSAR, 1 burst of " + size;
  return "COSAR, " + std::to_string(count) + " bursts, the first of " + size;
}
