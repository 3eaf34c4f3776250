#include <cerrno>
#include <cstdio>
#include <cstring>
#include <new>
#include <vector>

#include <png.h>

#include "gridkit/line_count.h"
#include "gridkit/os_error.h"
#include "gridkit/partial_file.h"
#include "gridkit/raster_writer.h"

namespace gridkit {

namespace {

// libpng reports by a callback that must not return; throwing from it is what its C++ users do, and
// the library is built with unwind tables on Debian.
[[noreturn]] void refuse(png_structp png, png_const_charp message) {
  throw Error(*static_cast<std::string*>(png_get_error_ptr(png)) + ": " + message);
}

void ignore_warning(png_structp, png_const_charp) {}

// libpng's two structures, freed together.
struct png_handles {
  png_structp png = nullptr;
  png_infop info = nullptr;
  png_handles() = default;
  png_handles(const png_handles&) = delete;
  png_handles& operator=(const png_handles&) = delete;
  ~png_handles() { png_destroy_write_struct(&png, &info); }
};

class PngWriter final : public RasterWriter {
 public:
  PngWriter(const std::string& path, std::int32_t width, std::int32_t height,
            const RasterOptions& options)
      : lines_(path, width, height, sample_size(options.type)),
        type_(checked(options.type, path)),
        file_(path, options.existing),
        target_(path) {
    stream_.reset(std::fopen(file_.path().c_str(), "wb"));
    if (stream_ == nullptr) refuse_by_system();
    handles_.png = png_create_write_struct(PNG_LIBPNG_VER_STRING, &target_, refuse, ignore_warning);
    if (handles_.png != nullptr) handles_.info = png_create_info_struct(handles_.png);
    if (handles_.info == nullptr) throw std::bad_alloc();
    png_set_write_fn(handles_.png, this, write, flush);
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
    png_text text{};
    text.compression = PNG_TEXT_COMPRESSION_NONE;
    text.key = const_cast<char*>(key.c_str());
    text.text = const_cast<char*>(value.c_str());
    png_set_text(handles_.png, handles_.info, &text, 1);
  }

  void set_no_data(double) override {}

  void finish() override {
    if (!lines_.is_complete()) throw Error(target_ + ": lines are missing");
    png_write_end(handles_.png, handles_.info);
    if (std::fclose(stream_.release()) != 0) refuse_by_system();
    file_.complete();
  }

 private:
  struct closer {
    void operator()(std::FILE* file) const { std::fclose(file); }
  };

  static SampleType checked(SampleType type, const std::string& path) {
    if (type == SampleType::f32) throw Error(path + ": a PNG holds no floating-point samples");
    return type;
  }

  [[noreturn]] void refuse_by_system() const {
    throw Error(target_ + ": cannot be written: " + os_error_in_words(errno));
  }

  // The library's own writing would lose the reason why it fails.
  static void write(png_structp png, png_bytep bytes, std::size_t count) {
    const auto* writer = static_cast<PngWriter*>(png_get_io_ptr(png));
    if (std::fwrite(bytes, 1, count, writer->stream_.get()) != count) writer->refuse_by_system();
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
  PartialFile file_;
  std::string target_;
  std::unique_ptr<std::FILE, closer> stream_;
  png_handles handles_;
  std::vector<png_byte> row_;
};

}  // namespace

std::unique_ptr<RasterWriter> create_png(const std::string& path, std::int32_t width,
                                         std::int32_t height, const RasterOptions& options) {
  return std::make_unique<PngWriter>(path, width, height, options);
}

}  // namespace gridkit
