#include "tools/simulate/cosar.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <stdexcept>

#include "tools/simulate/half_float.h"

namespace simulate {

namespace {

constexpr std::uint32_t annotation_records = 4;
constexpr std::uint32_t head_words = 2;
constexpr std::uint32_t head_period = 4;
constexpr char padding_byte = 0x55;

// A record under way: big-endian words and halves appended.
class Record {
 public:
  explicit Record(std::size_t bytes) { bytes_.reserve(bytes); }
  void clear() { bytes_.clear(); }
  void word(std::uint32_t value) {
    for (const unsigned shift : {24U, 16U, 8U, 0U})
      bytes_.push_back(static_cast<char>(value >> shift));
  }
  void half(std::uint16_t bits) {
    bytes_.push_back(static_cast<char>(bits >> 8U));
    bytes_.push_back(static_cast<char>(bits));
  }
  void letters(const char* text) { bytes_.insert(bytes_.end(), text, text + std::strlen(text)); }
  void fill(std::size_t bytes, char value) { bytes_.resize(bytes, value); }
  const std::vector<char>& bytes() const { return bytes_; }

 private:
  std::vector<char> bytes_;
};

std::uint16_t integer_bits(float value) {
  return static_cast<std::uint16_t>(std::lround(std::clamp(value, -32768.0F, 32767.0F)));
}

// First and last line, from 1, of those in which each sample is valid; 0 for none. Between the
// edges of the valid area all of them are.
class ValidLines {
 public:
  ValidLines(const CosarLayout& layout, std::size_t burst)
      : layout_(layout), burst_(burst), lines_(layout.bursts[burst].lines) {
    for (std::int32_t line = 0; line < lines_; ++line) {
      const ValidSamples valid = layout.valid_samples(burst, line);
      always_.first = std::max(always_.first, valid.first);
      always_.last = line == 0 ? valid.last : std::min(always_.last, valid.last);
    }
  }

  std::uint32_t first(std::uint32_t sample) const {
    if (always_.contain(sample)) return 1;
    for (std::int32_t line = 0; line < lines_; ++line) {
      if (is_valid(line, sample)) return static_cast<std::uint32_t>(line) + 1;
    }
    return 0;
  }

  std::uint32_t last(std::uint32_t sample) const {
    if (always_.contain(sample)) return static_cast<std::uint32_t>(lines_);
    for (std::int32_t line = lines_; line > 0; --line) {
      if (is_valid(line - 1, sample)) return static_cast<std::uint32_t>(line);
    }
    return 0;
  }

 private:
  bool is_valid(std::int32_t line, std::uint32_t sample) const {
    return layout_.valid_samples(burst_, line).contain(sample);
  }

  const CosarLayout& layout_;
  std::size_t burst_;
  std::int32_t lines_;
  ValidSamples always_;
};

class CosarFile {
 public:
  CosarFile(const std::string& path, const CosarLayout& layout)
      : path_(path),
        layout_(layout),
        out_(path, std::ios::binary | std::ios::trunc),
        samples_(static_cast<std::uint32_t>(layout.samples)),
        record_(layout.record_bytes()) {}

  void begin_burst(std::size_t burst) {
    const auto lines = static_cast<std::uint32_t>(layout_.bursts[burst].lines);
    out_.seekp(static_cast<std::streamoff>(layout_.offset_of(burst)));
    // The byte count's field has 32 bits; larger bursts keep its low ones.
    record_.word(static_cast<std::uint32_t>(layout_.burst_bytes(burst)));
    record_.word(1);
    record_.word(samples_);
    record_.word(lines);
    record_.word(static_cast<std::uint32_t>(burst + 1));
    record_.word(static_cast<std::uint32_t>(layout_.record_bytes()));
    record_.word(lines + annotation_records);
    record_.letters("CSAR");
    record_.word(layout_.kind.sample_type == SampleType::half ? 2 : 1);
    record_.word(1);
    record_.fill(std::size_t{4} * (head_words + samples_), 0);
    flush();
    const auto first_line = static_cast<std::uint32_t>(layout_.bursts[burst].first_line);
    const ValidLines valid(layout_, burst);
    write_range_record([&](std::uint32_t) { return first_line + 1; });
    write_range_record([&](std::uint32_t s) { return valid.first(s + 1); });
    write_range_record([&](std::uint32_t s) { return valid.last(s + 1); });
  }

  void write_line(ValidSamples valid, const std::vector<Sample>& samples) {
    record_.word(valid.first);
    record_.word(valid.last);
    for (std::uint32_t s = 0; s < samples_; ++s) {
      const Sample sample = valid.contain(s + 1) ? samples[s] : Sample{0, 0};
      record_.half(bits(sample.i));
      record_.half(bits(sample.q));
    }
    flush();
  }

  void finish() {
    out_.close();
    if (!out_) throw std::runtime_error(path_ + ": cannot be written");
  }

 private:
  template <class Value>
  void write_range_record(Value value) {
    for (std::uint32_t w = 0; w < head_words; ++w) record_.word(0);
    for (std::uint32_t s = 0; s < samples_; ++s) record_.word(value(s));
    flush();
  }

  std::uint16_t bits(float value) const {
    return layout_.kind.sample_type == SampleType::half
               ? half_bits(std::clamp(value, -largest_half, largest_half))
               : integer_bits(value);
  }

  void flush() {
    record_.fill(layout_.record_bytes(), padding_byte);
    out_.write(record_.bytes().data(), static_cast<std::streamsize>(record_.bytes().size()));
    record_.clear();
    if (!out_) throw std::runtime_error(path_ + ": cannot be written");
  }

  std::string path_;
  const CosarLayout& layout_;
  std::ofstream out_;
  std::uint32_t samples_;
  Record record_;
};

}  // namespace

std::uint64_t CosarLayout::record_bytes() const {
  return 4 * (static_cast<std::uint64_t>(samples) + head_words +
              static_cast<std::uint64_t>(kind.record_padding));
}

std::uint64_t CosarLayout::burst_bytes(std::size_t burst) const {
  return record_bytes() * (static_cast<std::uint64_t>(bursts[burst].lines) + annotation_records);
}

std::uint64_t CosarLayout::offset_of(std::size_t burst) const {
  std::uint64_t offset = 0;
  for (std::size_t before = 0; before < burst; ++before) offset += burst_bytes(before);
  return offset;
}

ValidSamples CosarLayout::valid_samples(std::size_t burst, std::int32_t line) const {
  const std::int64_t last = std::max(bursts[burst].lines - 1, 1);
  const auto share = [&](std::int64_t lines) {
    return static_cast<std::uint32_t>(kind.edge_taper * lines / last);
  };
  return {static_cast<std::uint32_t>(line) % head_period + 1 + share(last - line),
          static_cast<std::uint32_t>(samples) - share(line)};
}

void check_cosar(const CosarOptions& kind, std::int32_t lines, std::int32_t samples) {
  const auto refuse = [](bool wrong, const char* text) {
    if (wrong) throw std::invalid_argument(text);
  };
  refuse(kind.bursts < 1 || (kind.bursts > 1 && lines / kind.bursts < 32),
         "bursts must be 1 or more, several of at least 32 lines each");
  refuse(kind.record_padding < 0 || kind.record_padding > 10000,
         "record padding must be 0 to 10000 samples");
  refuse(kind.edge_taper < 0 || kind.edge_taper > 1000 || kind.edge_taper > samples / 4,
         "the edge taper must be 0 to 1000 samples and a quarter of a line at most");
}

CosarLayout lay_out_cosar(std::int32_t lines, std::int32_t samples, const CosarOptions& kind) {
  CosarLayout layout{samples, {}, kind};
  const std::int64_t count = kind.bursts;
  const std::int64_t overlap = lines / (8 * count);
  for (std::int64_t k = 0; k < count; ++k) {
    const std::int64_t first = k * lines / count;
    const std::int64_t end = std::min<std::int64_t>((k + 1) * lines / count + overlap, lines);
    layout.bursts.push_back(
        {static_cast<std::int32_t>(first), static_cast<std::int32_t>(end - first)});
  }
  return layout;
}

void write_cosar(const std::string& path, const CosarLayout& layout, const Synthesis& synthesis) {
  CosarFile file(path, layout);
  std::vector<Sample> samples(static_cast<std::size_t>(layout.samples));
  for (std::size_t burst = 0; burst < layout.bursts.size(); ++burst) {
    file.begin_burst(burst);
    for (std::int32_t line = 0; line < layout.bursts[burst].lines; ++line) {
      synthesis.complex_line(layout.bursts[burst].first_line + line, samples);
      file.write_line(layout.valid_samples(burst, line), samples);
    }
  }
  file.finish();
}

void write_sparse_cosar(const std::string& path, const CosarLayout& layout) {
  CosarFile file(path, layout);
  for (std::size_t burst = 0; burst < layout.bursts.size(); ++burst) file.begin_burst(burst);
  file.finish();
  std::filesystem::resize_file(path, layout.file_bytes());
}

}  // namespace simulate
