#include <cstring>
#include <span>
#include <vector>

#include "gridkit/raster_writer.h"
#include "gridkit/services/partial_stream.h"
#include "gridkit/writers/line_count.h"
#include "gridkit/writers/png_support.h"

namespace gridkit {

namespace {

[[noreturn]] void refuse(png_structp png, png_const_charp message) {
  throw Error(*static_cast<std::string*>(png_get_error_ptr(png)) + ": " + message);
}

class PngWriter final : public RasterWriter {
 public:
  PngWriter(const std::string& path, std::int32_t width, std::int32_t height,
            const RasterOptions& options)
      : lines_(path, width, height, sample_size(options.type)),
        type_(checked(options.type, path)),
        file_(path, options.existing),
        target_(path),
        handles_(&target_, refuse) {
    png_set_write_fn(handles_.png, &file_, write, flush);
    png_set_IHDR(handles_.png, handles_.info, static_cast<png_uint_32>(width),
                 static_cast<png_uint_32>(height), type_ == SampleType::u8 ? 8 : 16,
                 PNG_COLOR_TYPE_GRAY, PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT,
                 PNG_FILTER_TYPE_DEFAULT);
    png_set_compression_level(handles_.png, 3);
    png_write_info(handles_.png, handles_.info);
  }

  void write_lines(std::span<const std::byte> samples, std::int32_t lines) override {
    lines_.add(lines, samples.size());
    const std::size_t line = lines_.line_bytes();
    for (; !samples.empty(); samples = samples.subspan(line)) write_line(samples.first(line));
  }

  void add_metadata(const std::string& key, const std::string& value) override {
    handles_.add_text(key, value);
  }

  void set_no_data(double) override {}

  void finish() override {
    if (!lines_.is_complete()) throw Error(target_ + ": lines are missing");
    png_write_end(handles_.png, handles_.info);
    file_.close();
    file_.complete();
  }

 private:
  static SampleType checked(SampleType type, const std::string& path) {
    if (type == SampleType::f32) throw Error(path + ": a PNG holds no floating-point samples");
    return type;
  }

  // The library's own writing would lose the reason why it fails.
  static void write(png_structp png, png_bytep bytes, std::size_t count) {
    static_cast<PartialStream*>(png_get_io_ptr(png))->write(std::as_bytes(std::span(bytes, count)));
  }
  static void flush(png_structp) {}

  // PNG holds unsigned samples, most significant byte first.
  void write_line(std::span<const std::byte> samples) {
    row_.resize(samples.size());
    if (type_ == SampleType::u8) {
      std::memcpy(row_.data(), samples.data(), samples.size());
    } else {
      const unsigned shift = type_ == SampleType::s16 ? 0x8000U : 0U;
      for (std::size_t i = 0; i < samples.size(); i += 2) {
        std::uint16_t value = 0;
        std::memcpy(&value, &samples[i], 2);
        const unsigned shifted = (value + shift) & 0xFFFFU;
        row_[i] = static_cast<png_byte>(shifted >> 8U);
        row_[i + 1] = static_cast<png_byte>(shifted & 0xFFU);
      }
    }
    png_write_row(handles_.png, row_.data());
  }

  LineCount lines_;
  SampleType type_;
  PartialStream file_;
  std::string target_;
  PngHandles handles_;
  std::vector<png_byte> row_;
};

}  // namespace

std::unique_ptr<RasterWriter> create_png(const std::string& path, std::int32_t width,
                                         std::int32_t height, const RasterOptions& options) {
  return std::make_unique<PngWriter>(path, width, height, options);
}

}  // namespace gridkit
