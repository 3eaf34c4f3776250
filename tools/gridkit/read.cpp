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
#include "tools/gridkit/image_warning.h"

namespace {

constexpr int no_data = 3;

struct ReadRequest {
  std::string path;
  std::string layer;
  std::string output;                // GeoTIFF, or PNG where the name ends in .png
  std::string format;                // "", "GTiff" or "PNG"
  std::vector<std::int32_t> window;  // column, line, width, height; empty: the whole layer
  bool stretch = false;              // 8 bits for the eye instead of the pixels' own values
  bool quiet = false;
  bool raw = false;                 // one block to standard output instead
  std::vector<std::int32_t> block;  // its row and column
};

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

// A layer or a window of it into an image file. Lines that stayed without data are told in one line
// and named in the file's metadata.
int read_image(const Host& host, const ReadRequest& request) {
  const gridkit::Product product = host.open(request.path);
  warn_about_images(product.path());
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

// One block as raw 16-bit pixels in host order; status 3 where the plug-in has no data for it.
int read_raw_block(const Host& host, const ReadRequest& request) {
  const gridkit::Product product = host.open(request.path);
  warn_about_images(product.path());
  const gridkit::Layer layer = product.open_layer(request.layer);
  std::vector<std::uint16_t> pixels;
  if (!layer.read_block(request.block[0], request.block[1], pixels)) return no_data;
  const auto bytes = std::as_bytes(std::span<const std::uint16_t>(pixels));
  if (std::fwrite(bytes.data(), 1, bytes.size(), stdout) != bytes.size() ||
      std::fflush(stdout) != 0) {
    throw gridkit::Error("standard output cannot be written");
  }
  return 0;
}

}  // namespace

void add_read(CLI::App& app, Action& chosen) {
  const auto request = std::make_shared<ReadRequest>();
  CLI::App* command = app.add_subcommand("read", "Read a layer into an image file");
  command->add_option("ANNOTATION", request->path, "The product's annotation")->required();
  command->add_option("LAYER", request->layer, "A layer's name, as `info` shows it")->required();
  auto* output = command->add_option("OUTPUT", request->output, "Image file to write");
  command->add_option("-f,--format", request->format, "Format; without it by the output's ending")
      ->check(CLI::IsMember(std::vector<std::string>{"GTiff", "PNG"}));
  command->add_option("--window", request->window, "Column, line, width and height")->expected(4);
  command->add_flag("--stretch", request->stretch,
                    "8 bits for the eye, not the pixels' own values");
  command->add_flag("-q,--quiet", request->quiet, "No progress bar");
  auto* raw = command->add_flag("--raw", request->raw, "One block's pixels to standard output");
  auto* block =
      command->add_option("--block", request->block, "Row and column in the grid of blocks")
          ->expected(2);
  raw->needs(block)->excludes(output);
  block->needs(raw);
  command->callback([request, &chosen] {
    if (!request->raw && request->output.empty()) {
      throw CLI::RequiredError("OUTPUT (or --raw --block ROW COLUMN)");
    }
    chosen = [request](const Host& host) {
      return request->raw ? read_raw_block(host, *request) : read_image(host, *request);
    };
  });
}
