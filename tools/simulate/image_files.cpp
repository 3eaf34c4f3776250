#include "tools/simulate/image_files.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <vector>

#include "gridkit/raster_writer.h"

namespace simulate {

namespace {

constexpr std::uint32_t annotation_records = 4;
constexpr std::uint32_t head_words = 2;
constexpr std::uint32_t format_version = 1;

// The first samples of a line are not valid, and more of them on some lines than on others: line r
// (from 0) begins with sample r % 4 + 1. So sample s is valid in the lines whose r % 4 is below s.
constexpr std::uint32_t head_period = 4;

constexpr std::uint32_t first_valid_sample(std::uint32_t line) {
  return line % head_period + 1;
}

// A record under way: big-endian words and halves appended.
class Record {
 public:
  explicit Record(std::size_t bytes) { bytes_.reserve(bytes); }
  void clear() { bytes_.clear(); }
  void word(std::uint32_t value) {
    for (const unsigned shift : {24U, 16U, 8U, 0U})
      bytes_.push_back(static_cast<char>(value >> shift));
  }
  void half(std::int16_t value) {
    const auto bits = static_cast<std::uint16_t>(value);
    bytes_.push_back(static_cast<char>(bits >> 8U));
    bytes_.push_back(static_cast<char>(bits));
  }
  void letters(const char* text) { bytes_.insert(bytes_.end(), text, text + std::strlen(text)); }
  void fill(std::size_t bytes) { bytes_.resize(bytes, 0); }
  const std::vector<char>& bytes() const { return bytes_; }

 private:
  std::vector<char> bytes_;
};

class CosarFile {
 public:
  CosarFile(const std::string& path, std::int32_t lines, std::int32_t samples)
      : path_(path),
        out_(path, std::ios::binary | std::ios::trunc),
        lines_(static_cast<std::uint32_t>(lines)),
        samples_(static_cast<std::uint32_t>(samples)),
        record_bytes_(std::size_t{4} * (samples_ + head_words)),
        record_(record_bytes_) {}

  std::uint64_t file_bytes() const {
    return std::uint64_t{record_bytes_} * (lines_ + annotation_records);
  }

  void write_burst_annotation() {
    // The byte count's field has 32 bits; larger bursts keep its low ones.
    record_.word(static_cast<std::uint32_t>(file_bytes()));
    record_.word(1);
    record_.word(samples_);
    record_.word(lines_);
    record_.word(1);
    record_.word(static_cast<std::uint32_t>(record_bytes_));
    record_.word(lines_ + annotation_records);
    record_.letters("CSAR");
    record_.word(format_version);
    record_.word(1);
    flush();
    write_range_record([](std::uint32_t) { return 1U; });
    write_range_record([](std::uint32_t) { return 1U; });
    write_range_record([&](std::uint32_t s) { return last_valid_line(s + 1); });
  }

  // All samples from the first valid one on are valid.
  void write_line(std::uint32_t first_valid, const std::vector<Sample>& samples) {
    record_.word(first_valid);
    record_.word(samples_);
    for (std::uint32_t s = 0; s < samples_; ++s) {
      const bool valid = s + 1 >= first_valid;
      record_.half(valid ? rounded(samples[s].i) : std::int16_t{0});
      record_.half(valid ? rounded(samples[s].q) : std::int16_t{0});
    }
    flush();
  }

  // From 1, as samples are.
  std::uint32_t last_valid_line(std::uint32_t sample) const {
    std::uint32_t line = lines_ - 1;
    while (first_valid_sample(line) > sample) --line;
    return line + 1;
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

  static std::int16_t rounded(float value) {
    return static_cast<std::int16_t>(std::lround(std::clamp(value, -32768.0F, 32767.0F)));
  }

  void flush() {
    record_.fill(record_bytes_);
    out_.write(record_.bytes().data(), static_cast<std::streamsize>(record_bytes_));
    record_.clear();
    if (!out_) throw std::runtime_error(path_ + ": cannot be written");
  }

  std::string path_;
  std::ofstream out_;
  std::uint32_t lines_;
  std::uint32_t samples_;
  std::size_t record_bytes_;
  Record record_;
};

}  // namespace

void write_cosar(const std::string& path, const Scene& scene, const Synthesis& synthesis) {
  CosarFile file(path, scene.options.lines, scene.options.samples);
  file.write_burst_annotation();
  std::vector<Sample> samples(static_cast<std::size_t>(scene.options.samples));
  for (std::int32_t line = 0; line < scene.options.lines; ++line) {
    synthesis.complex_line(line, samples);
    file.write_line(first_valid_sample(static_cast<std::uint32_t>(line)), samples);
  }
  file.finish();
}

void write_sparse_cosar(const std::string& path, std::int32_t lines, std::int32_t samples) {
  CosarFile file(path, lines, samples);
  file.write_burst_annotation();
  file.finish();
  std::filesystem::resize_file(path, file.file_bytes());
}

namespace {

gridkit::RasterOptions raster_options(const std::optional<MapGrid>& map) {
  gridkit::RasterOptions options;
  if (map) {
    options.georeference =
        gridkit::Georeference{map->projection.epsg(),
                              {map->upper_left.easting - map->spacing / 2, map->spacing, 0,
                               map->upper_left.northing + map->spacing / 2, 0, -map->spacing}};
  }
  return options;
}

}  // namespace

void write_geotiff(const std::string& path, const Scene& scene, const Synthesis& synthesis) {
  const auto writer = gridkit::create_geotiff(path, scene.options.samples, scene.options.lines,
                                              raster_options(scene.map));
  std::vector<float> amplitudes(static_cast<std::size_t>(scene.options.samples));
  std::vector<std::uint16_t> pixels(amplitudes.size());
  for (std::int32_t line = 0; line < scene.options.lines; ++line) {
    synthesis.detected_line(line, amplitudes);
    std::transform(amplitudes.begin(), amplitudes.end(), pixels.begin(), [](float value) {
      return static_cast<std::uint16_t>(std::lround(std::clamp(value, 0.0F, 65535.0F)));
    });
    writer->write_lines(std::as_bytes(std::span<const std::uint16_t>(pixels)), 1);
  }
  writer->finish();
}

void write_sparse_geotiff(const std::string& path, std::int32_t lines, std::int32_t samples,
                          const std::optional<MapGrid>& map) {
  gridkit::RasterOptions options = raster_options(map);
  options.sparse = true;
  gridkit::create_geotiff(path, samples, lines, options)->finish();
}

}  // namespace simulate
