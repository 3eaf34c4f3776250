#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <filesystem>
#include <iostream>
#include <memory>
#include <optional>
#include <span>

#include "gridkit/image_reader.h"
#include "gridkit/raster_writer.h"
#include "tools/gridkit/commands.h"

namespace {

constexpr int no_data = 3;

// A bar on standard error, where that is a terminal.
class Progress {
 public:
  Progress(std::int32_t lines, bool quiet)
      : lines_(lines), shown_(!quiet && ::isatty(STDERR_FILENO) != 0) {}
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;
  ~Progress() {
    if (shown_) std::fputc('\n', stderr);
  }

  void advance(std::int32_t lines) {
    done_ += lines;
    if (!shown_) return;
    constexpr int width = 40;
    const auto filled = static_cast<int>(std::int64_t{done_} * width / lines_);
    const auto percent = static_cast<int>(std::int64_t{done_} * 100 / lines_);
    const std::string bar(static_cast<std::size_t>(filled), '#');
    std::fprintf(stderr, "\r[%-*s] %3d%%", width, bar.c_str(), percent);
  }

 private:
  std::int32_t lines_;
  std::int32_t done_ = 0;
  bool shown_;
};

bool wants_png(const ReadRequest& request) {
  if (!request.format.empty()) return request.format == "PNG";
  std::string extension = std::filesystem::path(request.output).extension().string();
  std::transform(extension.begin(), extension.end(), extension.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return extension == ".png";
}

gridkit::Window window_of(const ReadRequest& request, const gridkit::Layer& layer) {
  if (request.window.empty()) return {0, 0, layer.width(), layer.height()};
  return {request.window[0], request.window[1], request.window[2], request.window[3]};
}

// "935-998, 1000" for the image's lines, counted from 0.
std::string lines_as_text(const std::vector<gridkit::LineRange>& ranges) {
  std::string text;
  for (const gridkit::LineRange& range : ranges) {
    if (!text.empty()) text += ", ";
    text += std::to_string(range.first);
    if (range.last > range.first) text += '-' + std::to_string(range.last);
  }
  return text;
}

// Pixels for the eye, 8 bits: phases over a full turn, magnitudes from 0 to three times their mean.
class Stretch {
 public:
  Stretch(const gridkit::Product& product, const std::string& layer, const gridkit::Window& window,
          bool is_phase)
      : is_phase_(is_phase) {
    if (is_phase) return;
    double sum = 0;
    gridkit::read_window(product, layer, window,
                         [&](std::span<const std::uint16_t> pixels, std::int32_t) {
                           for (const std::uint16_t pixel : pixels) sum += pixel;
                         });
    const double mean = sum / window.width / window.height;
    if (mean > 0) gain_ = 255 / (3 * mean);
  }

  std::span<const std::byte> operator()(std::span<const std::uint16_t> pixels) {
    bytes_.resize(pixels.size());
    std::transform(pixels.begin(), pixels.end(), bytes_.begin(), [&](std::uint16_t pixel) {
      if (is_phase_) return static_cast<std::byte>((pixel ^ 0x8000U) >> 8U);
      return static_cast<std::byte>(std::min(255.0, pixel * gain_));
    });
    return bytes_;
  }

 private:
  bool is_phase_;
  double gain_ = 0;
  std::vector<std::byte> bytes_;
};

std::string metadata_as_text(std::int32_t column, std::int32_t line) {
  return std::to_string(column) + ' ' + std::to_string(line);
}

}  // namespace

int read_image(const Host& host, const ReadRequest& request) {
  const gridkit::Product product = host.open(request.path);
  gridkit::Window window;
  gridkit::RasterOptions options;
  {
    const gridkit::Layer layer = product.open_layer(request.layer);
    window = window_of(request, layer);
    options.type =
        layer.pixel_type() == "s16" ? gridkit::SampleType::s16 : gridkit::SampleType::u16;
  }
  std::optional<Stretch> stretch;
  if (request.stretch) {
    stretch.emplace(product, request.layer, window, options.type == gridkit::SampleType::s16);
    options.type = gridkit::SampleType::u8;
  }
  std::unique_ptr<gridkit::RasterWriter> writer;
  Progress progress(std::max(window.height, 1), request.quiet);
  const auto write = [&](std::span<const std::uint16_t> pixels, std::int32_t lines) {
    if (writer == nullptr) {
      const auto create = wants_png(request) ? gridkit::create_png : gridkit::create_geotiff;
      writer = create(request.output, window.width, window.height, options);
    }
    writer->write_lines(stretch ? (*stretch)(pixels) : std::as_bytes(pixels), lines);
    progress.advance(lines);
  };
  const auto missing = gridkit::read_window(product, request.layer, window, write);
  writer->add_metadata("SOURCE", request.path);
  writer->add_metadata("LAYER", request.layer);
  writer->add_metadata("FIRST_COLUMN_AND_LINE", metadata_as_text(window.column, window.line));
  if (!missing.empty()) writer->add_metadata("LINES_WITHOUT_DATA", lines_as_text(missing));
  writer->finish();
  if (!missing.empty()) {
    std::cerr << "gridkit: " << request.output
              << ": lines of the image without data, in part or in "
              << "whole: " << lines_as_text(missing) << '\n';
  }
  return 0;
}

int read_raw_block(const Host& host, const std::string& path, const std::string& layer_name,
                   std::int32_t row, std::int32_t column) {
  const gridkit::Product product = host.open(path);
  const gridkit::Layer layer = product.open_layer(layer_name);
  std::vector<std::uint16_t> pixels;
  if (!layer.read_block(row, column, pixels)) return no_data;
  const auto bytes = std::as_bytes(std::span<const std::uint16_t>(pixels));
  if (std::fwrite(bytes.data(), 1, bytes.size(), stdout) != bytes.size() ||
      std::fflush(stdout) != 0) {
    throw gridkit::Error("standard output cannot be written");
  }
  return 0;
}
