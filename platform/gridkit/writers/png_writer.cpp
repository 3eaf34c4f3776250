#include <algorithm>
#include <cstdint>
#include <deque>
#include <future>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include <zlib.h>

#include "gridkit/raster_writer.h"
#include "gridkit/services/partial_stream.h"
#include "gridkit/writers/big_endian.h"
#include "gridkit/writers/line_count.h"
#include "gridkit/writers/png_parts.h"
#include "gridkit/writers/png_strip.h"
#include "gridkit/writers/thread_count.h"

namespace gridkit {

namespace {

constexpr std::size_t strip_bytes = 512UL * 1024;  // about so many, if lines are not longer
constexpr std::int32_t longest_side = 1000000;     // what readers take; the format has 2^31 - 1

class PngEncoder final : public RasterWriter {
 public:
  // `name` is how messages call the picture.
  PngEncoder(ByteSink sink, const std::string& name, std::int32_t width, std::int32_t height,
             const RasterOptions& options)
      : lines_(name, width, height, sample_size(options.type)),
        type_(checked(options.type, width, height, name)),
        threads_(thread_count(options.threads)),
        name_(name),
        parts_(std::move(sink)) {
    parts_.header(width, height, type_ == SampleType::u8 ? 8 : 16, PngColour::grey);
  }

  void write_lines(std::span<const std::byte> samples, std::int32_t lines) override {
    const bool is_first = lines_.next_line() == 0;
    lines_.add(lines, samples.size());
    if (is_first && lines > 0) {
      write_texts();  // of those before the pixels more programs take note
      parts_.chunk("IDAT", zlib_head);
    }
    const std::size_t full = std::max<std::size_t>(1, strip_bytes / lines_.line_bytes());
    while (!samples.empty()) {
      const std::size_t wanted = full * lines_.line_bytes() - collected_.size();
      const auto taken = samples.first(std::min(wanted, samples.size()));
      collected_.insert(collected_.end(), taken.begin(), taken.end());
      samples = samples.subspan(taken.size());
      const bool is_last = samples.empty() && lines_.is_complete();
      if (taken.size() == wanted || is_last) start_strip(is_last);
    }
  }

  void add_metadata(const std::string& key, const std::string& value) override {
    texts_.emplace_back(key, value);
  }

  void set_no_data(double) override {}

  void finish() override {
    if (!lines_.is_complete()) throw Error(name_ + ": lines are missing");
    while (!under_way_.empty()) write_next_piece();
    parts_.chunk("IDAT", big_endian(adler_));
    write_texts();
    parts_.chunk("IEND", {});
  }

 private:
  static SampleType checked(SampleType type, std::int32_t width, std::int32_t height,
                            const std::string& name) {
    if (std::max(width, height) > longest_side) {
      throw Error(name + ": a PNG has at most 1000000 columns and lines");
    }
    switch (type) {
      case SampleType::u8:
      case SampleType::u16:
      case SampleType::s16:
        return type;
      case SampleType::f32:
        throw Error(name + ": a PNG holds no floating-point samples");
      case SampleType::cs16:
      case SampleType::cf32:
        break;
    }
    throw Error(name + ": a PNG holds no complex samples");
  }

  void write_texts() {
    for (const auto& [key, value] : std::exchange(texts_, {})) parts_.text(key, value);
  }

  void start_strip(bool is_last) {
    if (under_way_.size() >= threads_) write_next_piece();
    PngStrip strip{type_, lines_.line_bytes(), std::exchange(collected_, {}), is_last};
    // Where no thread can be had, the strip is compressed when its turn to be written comes.
    under_way_.push_back(std::async(std::launch::async | std::launch::deferred,
                                    [strip = std::move(strip)] { return compress(strip); }));
  }

  void write_next_piece() {
    const PngPiece piece = under_way_.front().get();
    under_way_.pop_front();
    parts_.chunk("IDAT", piece.deflated);
    adler_ = static_cast<std::uint32_t>(
        adler32_combine(adler_, piece.adler, static_cast<z_off_t>(piece.length)));
  }

  LineCount lines_;
  SampleType type_;
  std::size_t threads_;
  std::string name_;
  PngParts parts_;
  std::vector<std::byte> collected_;  // lines of the next strip
  std::deque<std::future<PngPiece>> under_way_;
  std::uint32_t adler_ = 1;  // of the pieces that are written; 1 is that of nothing
  std::vector<std::pair<std::string, std::string>> texts_;  // that are not written yet
};

class PngFile final : public RasterWriter {
 public:
  PngFile(const std::string& path, std::int32_t width, std::int32_t height,
          const RasterOptions& options)
      : file_(path, options.existing),
        encoder_([this](std::span<const std::byte> bytes) { file_.write(bytes); }, path, width,
                 height, options) {}

  void write_lines(std::span<const std::byte> samples, std::int32_t lines) override {
    encoder_.write_lines(samples, lines);
  }
  void add_metadata(const std::string& key, const std::string& value) override {
    encoder_.add_metadata(key, value);
  }
  void set_no_data(double value) override { encoder_.set_no_data(value); }

  void finish() override {
    encoder_.finish();
    file_.close();
    file_.complete();
  }

 private:
  PartialStream file_;
  PngEncoder encoder_;
};

}  // namespace

std::unique_ptr<RasterWriter> stream_png(ByteSink sink, const std::string& name, std::int32_t width,
                                         std::int32_t height, const RasterOptions& options) {
  return std::make_unique<PngEncoder>(std::move(sink), name, width, height, options);
}

std::unique_ptr<RasterWriter> create_png(const std::string& path, std::int32_t width,
                                         std::int32_t height, const RasterOptions& options) {
  return std::make_unique<PngFile>(path, width, height, options);
}

}  // namespace gridkit
