#include <cerrno>
#include <cstdio>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "gridkit/os_error.h"
#include "tools/command_line/help.h"
#include "tools/gridkit/commands.h"
#include "tools/gridkit/product/image_warning.h"
#include "tools/gridkit/product/layer_name.h"
#include "tools/gridkit/read/read_image.h"

namespace {

constexpr int no_data = 3;

constexpr const char* footer = R"(Formats, by -f or by the output's ending:
  GTiff  .tif .tiff   GeoTIFF, uncompressed
  COG                 Cloud-Optimised GeoTIFF: tiles, deflated, with overviews
  PNG    .png         8 or 16 bits, no place on Earth; phases with 32768 added
  ENVI   .img .envi   the samples alone, and a text header OUTPUT.hdr

The pixels keep their own 16-bit values: magnitudes, or phases of which 65536 make a full turn.
--calibrate beta0 writes radar brightness instead, calFactor * DN^2 as 32-bit floating point with the
factor that the product publishes; beta0-db the same in decibels. Formula and factor stand in the
file's metadata.

Images on a map keep their map. Others get a grid of 10 x 10 ground control points (WGS 84, at the
scene's average height) in GTiff and COG files, so that gdalwarp and viewers place them.

No data: NaN in calibrated files (of an image on a map a digital number of 0, in decibels any 0), else
0, stated in the file where it is on a map or lines are missing.

An output that exists is refused without --overwrite. Whatever ends the program early, no unfinished
file has the output's name.

Examples:
  gridkit read PRODUCT X_HH_MAGNITUDE_1 magnitude.tif
  gridkit read PRODUCT X_HH_MAGNITUDE_1 part.tif --window 1000 2000 512 512
  gridkit read PRODUCT X_HH_MAGNITUDE_1 beta0.tif -f COG --calibrate beta0-db
  gridkit read PRODUCT X_HH_PHASE_2 phase.img
  gridkit read --raw PRODUCT X_HH_PHASE_2 --block 3 4 > block.u16

Exit status 3: the plug-in has no data for the raw block.)";

struct ReadRequest {
  std::string path;
  std::string format;                // one of output_format_names(), or empty
  std::vector<std::int32_t> window;  // column, line, width, height; empty: the whole layer
  std::string calibrate;             // "", "beta0" or "beta0-db"
  bool stretch = false;
  bool raw = false;                 // one block to standard output instead
  std::vector<std::int32_t> block;  // its row and column
  ImageRequest image;
};

// Puts the request's parts together. Throws CLI::ParseError for those that do not go together.
void complete(ReadRequest& request) {
  if (request.raw) return;
  if (request.image.output.empty()) {
    throw CLI::RequiredError("OUTPUT (or --raw --block ROW COLUMN)");
  }
  const auto format = output_format(request.format, request.image.output);
  if (!format) {
    throw CLI::ValidationError("OUTPUT", "the ending of \"" + request.image.output +
                                             "\" tells no format; give one with -f");
  }
  request.image.format = *format;
  if (!request.calibrate.empty() && *format == OutputFormat::png) {
    throw CLI::ValidationError("--calibrate",
                               "a PNG holds no floating-point pixels; write GTiff, COG or ENVI");
  }
  if (!request.window.empty()) {
    const auto& w = request.window;
    request.image.window = gridkit::Window{w[0], w[1], w[2], w[3]};
  }
  if (request.stretch) request.image.kind = PixelKind::stretched;
  if (!request.calibrate.empty()) {
    request.image.kind =
        request.calibrate == "beta0" ? PixelKind::beta0 : PixelKind::beta0_decibels;
  }
}

// One block as raw 16-bit pixels in host order; status 3 where the plug-in has no data for it. What
// the plug-in makes of a layer's name is its own affair.
int read_raw_block(const gridkit::Product& product, const ReadRequest& request) try {
  const gridkit::Layer layer = product.open_layer(request.image.layer);
  std::vector<std::uint16_t> pixels;
  if (!layer.read_block(request.block[0], request.block[1], pixels)) return no_data;
  const auto bytes = std::as_bytes(std::span<const std::uint16_t>(pixels));
  if (std::fwrite(bytes.data(), 1, bytes.size(), stdout) != bytes.size() ||
      std::fflush(stdout) != 0) {
    throw gridkit::Error("standard output cannot be written: " + gridkit::os_error_in_words(errno));
  }
  return 0;
} catch (const gridkit::Error& error) {
  const std::string unknown = unknown_layer(product, request.image.layer);
  throw gridkit::Error(unknown.empty() ? error.what()
                                       : std::string(error.what()) + "\n  " + unknown);
}

int read(const Host& host, const ReadRequest& request) {
  const gridkit::Product product = host.open(request.path);
  warn_about_images(product.path());
  if (request.raw) return read_raw_block(product, request);
  const std::string unknown = unknown_layer(product, request.image.layer);
  if (!unknown.empty()) throw gridkit::Error(product.path() + ": " + unknown);
  read_image(product, request.image);
  return 0;
}

}  // namespace

void add_read(CLI::App& app, Action& chosen) {
  const auto request = std::make_shared<ReadRequest>();
  CLI::App* command =
      app.add_subcommand("read", "Read a layer, or a window of it, into an image file");
  command->footer(footer);
  command->add_option("PRODUCT", request->path, product_help)->required();
  command->add_option("LAYER", request->image.layer, "A layer's name, as `gridkit layers` lists it")
      ->required();
  auto* output = command->add_option("OUTPUT", request->image.output, "Image file to write");
  take_one_of(command->add_option("-f,--format", request->format,
                                  "Format; without it by the output's ending"),
              output_format_names());
  command
      ->add_option("--window", request->window,
                   "First column, first line, width and height, counted from 0")
      ->expected(4)
      ->type_name("COLUMN LINE WIDTH HEIGHT");
  auto* calibrate =
      command->add_option("--calibrate", request->calibrate, "Radar brightness instead of pixels");
  take_one_of(calibrate, {"beta0", "beta0-db"});
  command->add_flag("--stretch", request->stretch, "8 bits for the eye, not the pixels' own values")
      ->excludes(calibrate);
  command->add_flag("--overwrite", request->image.overwrite, "Replace an output that exists");
  command->add_flag("-q,--quiet", request->image.quiet, "No progress bar");
  auto* raw = command->add_flag("--raw", request->raw, "One block's pixels to standard output");
  auto* block =
      command->add_option("--block", request->block, "Row and column in the grid of blocks")
          ->expected(2)
          ->type_name("ROW COLUMN");
  raw->needs(block)->excludes(output);
  block->needs(raw);
  command->callback([request, &chosen] {
    complete(*request);
    chosen = [request](const Host& host) { return read(host, *request); };
  });
}
