#include <algorithm>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "tools/command_line/exit_status.h"
#include "tools/command_line/help.h"
#include "tools/command_line/wrong_use.h"
#include "tools/gridkit/commands.h"
#include "tools/gridkit/product/image_warning.h"
#include "tools/gridkit/product/layer_name.h"
#include "tools/gridkit/read/calibration.h"
#include "tools/gridkit/read/read_all.h"
#include "tools/gridkit/read/read_image.h"
#include "tools/gridkit/read/read_samples.h"
#include "tools/gridkit/read/standard_output.h"

namespace {

constexpr const char* footer = R"(Formats, by -f or by the output's ending:
  GTiff  .tif .tiff   GeoTIFF
  COG                 Cloud-Optimised GeoTIFF: tiles, with overviews
  PNG    .png         8 or 16 bits, no place on Earth; phases with 32768 added
  ENVI   .img .envi   the samples alone, and a text header OUTPUT.hdr

PNG and ENVI can go to standard output, named by - as OUTPUT; of ENVI it gets the samples, no header.
GTiff is not compressed and COG is deflated, unless --compress says otherwise; pixels stay the same.

The pixels keep their own 16-bit values: magnitudes, or phases of which 65536 make a full turn. A
sample with I or Q equal to 0 has phase 0, so magnitude and phase together are not quite the complex
sample.
In place of a layer the name of an image, such as HH, as `gridkit samples` lists it, gives its samples as
they are: complex 16-bit integers (half-precision numbers as complex 32-bit floating point), or the
amplitudes of a detected image. ENVI stores complex integers as complex floating point.

--calibrate writes backscatter instead, as 32-bit floating point: beta0 = calFactor * DN^2 with the
factor that the product publishes, sigma0 = beta0 * sin(incidence), gamma0 = beta0 * tan(incidence); with
-db the same in decibels. The incidence is that of the product's geolocation grid, else of the sensor
model on the ellipsoid. --subtract-noise takes the instrument's own noise from beta0 first; powers below
0 stay, in decibels they are NaN. Formula, factor, noise and source of the incidence stand in the file's
metadata.

Images on a map keep their map. Others get, in GTiff and COG files, rational polynomials, with which
gdalwarp -rpc and a terrain model put them on a map, and a grid of 15 x 15 ground control points
(WGS 84, at the terrain's height where the product tells it).

No data: NaN in calibrated files (of an image on a map a digital number of 0, in decibels 0 and less), else
0, stated in the file where it is on a map or lines are missing.

An output that exists is refused without --overwrite. Whatever ends the program early, no unfinished
file has the output's name.

Examples:
  gridkit read PRODUCT X_HH_MAGNITUDE_1 magnitude.tif
  gridkit read PRODUCT X_HH_MAGNITUDE_1 part.tif --window 1000 2000 512 512
  gridkit read PRODUCT X_HH_MAGNITUDE_1 beta0.tif -f COG --calibrate beta0-db
  gridkit read PRODUCT HH sigma0.tif --calibrate sigma0 --subtract-noise
  gridkit read PRODUCT X_HH_PHASE_2 phase.img
  gridkit read PRODUCT HH complex.tif
  gridkit read PRODUCT X_HH_MAGNITUDE_1 - -f ENVI | sha256sum
  gridkit read PRODUCT --all FOLDER --compress zstd
  gridkit read --raw PRODUCT X_HH_PHASE_2 --block 3 4 > block.u16

Exit status 3: the plug-in has no data for the raw block.)";

struct ReadRequest {
  std::string path;
  std::string format;                // one of output_format_names(), or empty
  std::vector<std::int32_t> window;  // column, line, width, height; empty: the whole layer
  std::string folder;                // of every layer's output; empty: one layer is read
  bool raw = false;                  // one block to standard output instead
  std::vector<std::int32_t> block;   // its row and column
  std::string calibration;           // one of calibration_names(), or empty
  bool subtract_noise = false;
  ImageRequest image;

  // Of LAYER and OUTPUT one or both are missing.
  bool lacks_names() const { return !raw && folder.empty() && image.output.empty(); }
};

OutputFormat chosen_format(const ReadRequest& request) {
  if (!request.folder.empty() && request.format.empty()) return OutputFormat::geotiff;
  const std::string& output = request.image.output;
  const auto format = output_format(request.format, output);
  if (output == standard_output && !(format && can_stream(*format))) {
    throw CLI::ValidationError("OUTPUT", "only PNG and ENVI go to standard output; choose by -f");
  }
  if (format) return *format;
  throw CLI::ValidationError("OUTPUT",
                             "the ending of \"" + output + "\" tells no format; give one with -f");
}

// Puts the request's parts together. Throws CLI::ParseError for those that do not go together.
void complete(ReadRequest& request) {
  if (request.raw) {
    if (request.image.layer.empty()) throw CLI::RequiredError("LAYER");
    return;
  }
  if (request.lacks_names()) return;  // told when the product's layers are known
  ImageRequest& image = request.image;
  image.format = chosen_format(request);
  if (!request.calibration.empty()) {
    image.calibration = calibration_named(request.calibration, request.subtract_noise);
  }
  if (image.calibration && image.format == OutputFormat::png) {
    throw CLI::ValidationError("--calibrate",
                               "a PNG holds no floating-point pixels; write GTiff, COG or ENVI");
  }
  const bool is_tiff = image.format == OutputFormat::geotiff || image.format == OutputFormat::cog;
  if (image.compression && !is_tiff) {
    throw CLI::ValidationError("--compress",
                               "is for GTiff and COG; a PNG is always compressed, "
                               "samples of ENVI never are");
  }
  if (!request.window.empty()) {
    const auto& w = request.window;
    request.image.window = gridkit::Window{w[0], w[1], w[2], w[3]};
  }
}

// One block as raw 16-bit pixels in host order; status 3 where the plug-in has no data for it. What
// the plug-in makes of a layer's name is its own affair.
int read_raw_block(const gridkit::Product& product, const ReadRequest& request) try {
  const gridkit::Layer layer = product.open_layer(request.image.layer);
  std::vector<std::uint16_t> pixels;
  if (!layer.read_block(request.block[0], request.block[1], pixels)) return exit_no_data;
  write_to_standard_output(std::as_bytes(std::span<const std::uint16_t>(pixels)));
  return 0;
} catch (const gridkit::Error& error) {
  const std::string unknown = unknown_layer(product, request.image.layer);
  if (unknown.empty()) throw;
  throw gridkit::Error(product.path() + ": " + unknown, {}, error.calls());
}

// Which of LAYER and OUTPUT is missing, and what layers there are: a sole name that is none of them
// is meant as the output. Of what is no product neither is known.
[[noreturn]] void refuse_lack_of_names(const Host& host, const ReadRequest& request) {
  const std::string& name = request.image.layer;
  std::vector<std::string> layers;
  bool is_layer = false;
  try {
    const gridkit::Product product = host.open(request.path);
    layers = product.layer_names();
    is_layer = std::find(layers.begin(), layers.end(), name) != layers.end() ||
               find_sample_image(product, name);
  } catch (const gridkit::Error&) {
    throw WrongUse(name.empty() ? "LAYER and OUTPUT are missing" : "LAYER or OUTPUT is missing");
  }
  if (is_layer) throw WrongUse("OUTPUT is missing after " + name);
  std::string message = name.empty() ? "LAYER and OUTPUT are" : "LAYER is";
  message += " missing; the layers are";
  for (const std::string& layer : layers) message += ' ' + layer;
  throw WrongUse(message + "; --all FOLDER reads every one");
}

int read(const Host& host, const ReadRequest& request) {
  if (request.lacks_names()) refuse_lack_of_names(host, request);
  const gridkit::Product product = host.open(request.path);
  if (request.raw) {
    warn_about_images(product.path());
    return read_raw_block(product, request);
  }
  if (!request.folder.empty()) {
    check_images_to_read(product.path());
    read_all(product, request.image, request.folder);
    return 0;
  }
  if (const auto image = find_sample_image(product, request.image.layer)) {
    read_samples(product, *image, request.image);
    return 0;
  }
  check_images_to_read(product.path());
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
  auto* layer = command->add_option(
      "LAYER", request->image.layer,
      "A layer's name, as `gridkit layers` lists it, or an image's, as `gridkit samples` "
      "does");
  auto* output = command->add_option("OUTPUT", request->image.output, "Image file to write, or -");
  auto* all = command
                  ->add_option("--all", request->folder,
                               "Every layer into this folder, as LAYER.tif or what -f says")
                  ->type_name("FOLDER")
                  ->excludes(layer)
                  ->excludes(output);
  take_one_of(command->add_option("-f,--format", request->format,
                                  "Format; without it by the output's ending"),
              output_format_names());
  command
      ->add_option("--window", request->window,
                   "First column, first line, width and height, counted from 0")
      ->expected(4)
      ->type_name("COLUMN LINE WIDTH HEIGHT");
  auto* calibrate = command->add_option("--calibrate", request->calibration,
                                        "Backscatter instead of pixels; -db: in decibels");
  take_one_of(calibrate, calibration_names());
  command
      ->add_flag("--subtract-noise", request->subtract_noise,
                 "Without the instrument's own noise, by the product's noise records")
      ->needs(calibrate);
  command
      ->add_flag_callback(
          "--stretch", [request] { request->image.kind = PixelKind::stretched; },
          "8 bits for the eye, not the pixels' own values")
      ->excludes(calibrate);
  take_one_of<gridkit::Compression>(
      command->add_option("--compress", request->image.compression, "How GTiff and COG are stored"),
      {{"deflate", gridkit::Compression::deflate},
       {"zstd", gridkit::Compression::zstd},
       {"lzw", gridkit::Compression::lzw},
       {"none", gridkit::Compression::none}});
  take_range(command->add_option("--threads", request->image.threads,
                                 "How many threads compress, 1 to 16; without it one on each "
                                 "processor"),
             "COUNT", 1, 16);
  command->add_flag_callback(
      "--no-delays", [request] { request->image.delays = false; },
      "Place the image without the signal delays that the geolocation grid tells");
  command->add_flag("--overwrite", request->image.overwrite, "Replace an output that exists");
  command->add_flag("-q,--quiet", request->image.quiet, "No progress bar");
  auto* raw = command->add_flag("--raw", request->raw, "One block's pixels to standard output");
  auto* block =
      command->add_option("--block", request->block, "Row and column in the grid of blocks")
          ->expected(2)
          ->type_name("ROW COLUMN");
  raw->needs(block)->excludes(output)->excludes(all);
  block->needs(raw);
  command->callback([request, &chosen] {
    complete(*request);
    chosen = [request](const Host& host) { return read(host, *request); };
  });
}
