#include <cerrno>
#include <cstdio>
#include <cstring>
#include <new>
#include <vector>

#include <png.h>

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
      : file_(path), target_(path), width_(width), height_(height), type_(options.type) {
    stream_.reset(std::fopen(file_.path().c_str(), "wb"));
    if (stream_ == nullptr) throw Error(path + ": cannot be created: " + std::strerror(errno));
    handles_.png = png_create_write_struct(PNG_LIBPNG_VER_STRING, &target_, refuse, ignore_warning);
    if (handles_.png != nullptr) handles_.info = png_create_info_struct(handles_.png);
    if (handles_.info == nullptr) throw std::bad_alloc();
    png_init_io(handles_.png, stream_.get());
    png_set_IHDR(handles_.png, handles_.info, static_cast<png_uint_32>(width),
                 static_cast<png_uint_32>(height), type_ == SampleType::u8 ? 8 : 16,
                 PNG_COLOR_TYPE_GRAY, PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT,
                 PNG_FILTER_TYPE_DEFAULT);
    png_set_compression_level(handles_.png, 3);
    png_write_info(handles_.png, handles_.info);
  }

  void write_lines(std::span<const std::byte> samples, std::int32_t lines) override {
    const std::size_t sample = type_ == SampleType::u8 ? 1 : 2;
    const std::size_t line = sample * static_cast<std::size_t>(width_);
    if (lines < 0 || lines > height_ - next_line_ ||
        samples.size() != line * static_cast<std::size_t>(lines)) {
      throw Error(target_ + ": the lines do not fit the image");
    }
    for (; !samples.empty(); samples = samples.subspan(line)) write_line(samples.first(line));
    next_line_ += lines;
  }

  void add_metadata(const std::string& key, const std::string& value) override {
    png_text text{};
    text.compression = PNG_TEXT_COMPRESSION_NONE;
    text.key = const_cast<char*>(key.c_str());
    text.text = const_cast<char*>(value.c_str());
    png_set_text(handles_.png, handles_.info, &text, 1);
  }

  void finish() override {
    if (next_line_ < height_) throw Error(target_ + ": lines are missing");
    png_write_end(handles_.png, handles_.info);
    if (std::fclose(stream_.release()) != 0) {
      throw Error(target_ + ": cannot be written: " + std::strerror(errno));
    }
    file_.complete();
  }

 private:
  struct closer {
    void operator()(std::FILE* file) const { std::fclose(file); }
  };

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

  PartialFile file_;
  std::string target_;
  std::int32_t width_;
  std::int32_t height_;
  SampleType type_;
  std::int32_t next_line_ = 0;
  std::unique_ptr<std::FILE, closer> stream_;
  png_handles handles_;
  std::vector<png_byte> row_;
};

}  // namespace

std::unique_ptr<RasterWriter> create_png(const std::string& path, std::int32_t width,
                                         std::int32_t height, const RasterOptions& options) {
  if (width < 1 || height < 1) throw Error(path + ": an image needs a positive size");
  return std::make_unique<PngWriter>(path, width, height, options);
}

}  // namespace gridkit
