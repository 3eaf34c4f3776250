#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "gridkit/product_path.h"
#include "gridkit/whole_file.h"
#include "tools/command_line/help.h"
#include "tools/gridkit/commands.h"
#include "tools/gridkit/picture/quicklook.h"
#include "tools/gridkit/product/image_warning.h"
#include "tools/gridkit/product/layer_name.h"
#include "tools/gridkit/read/calibration.h"
#include "tools/gridkit/read/line_ranges.h"
#include "tools/gridkit/read/output_file.h"
#include "tools/gridkit/read/standard_output.h"
#include "tools/gridkit/terminal/progress.h"
#include "tools/gridkit/terminal/terminal.h"

namespace {

constexpr const char* footer =
    R"(The layer is read once. A pixel of the picture is the mean of those that fall into it: of magnitudes
the root of the mean intensity, stretched from its 2nd to its 98th percentile; of phases the direction
of the mean phasor, in colours that go around a circle. Pixels are square on the ground where the
product can be placed, else they keep the layer's own aspect. What has no data is transparent: nothing
but zero magnitudes, and lines that could not be read. The PNG's texts tell what it shows.

--calibrate shows backscatter in place of magnitudes, as `gridkit read` has it: the root of the mean, or
with -db the mean in decibels.

Examples:
  gridkit quicklook PRODUCT picture.png
  gridkit quicklook PRODUCT X_HH_PHASE_2 phase.png --size 512
  gridkit quicklook PRODUCT sigma0.png --calibrate sigma0-db)";

struct Request {
  std::vector<std::string> names;  // product, layer or none, output
  std::int32_t size = 1024;
  std::string calibration;  // one of calibration_names(), or empty
  bool subtract_noise = false;
  bool overwrite = false;
  bool quiet = false;

  const std::string& product() const { return names.front(); }
  const std::string& output() const { return names.back(); }
};

std::string chosen_layer(const gridkit::Product& product, const Request& request) {
  if (request.names.size() == 3) {
    const std::string unknown = unknown_layer(product, request.names[1]);
    if (!unknown.empty()) throw gridkit::Error(product.path() + ": " + unknown);
    return request.names[1];
  }
  const auto names = product.layer_names();
  if (names.empty()) throw gridkit::Error(product.path() + ": it has no layers");
  return names.front();
}

std::optional<PictureCalibration> calibration_of_picture(const gridkit::Product& product,
                                                         const std::string& layer,
                                                         const Request& request) {
  if (request.calibration.empty()) return std::nullopt;
  const CalibrationRequest wanted = calibration_named(request.calibration, request.subtract_noise);
  warn_about_grid(product, wanted);
  try {
    const Calibration calibration = calibration_of(product, product.open_layer(layer), wanted);
    return PictureCalibration{calibration.radiometry(), wanted.in_decibels, calibration.metadata()};
  } catch (const gridkit::Error& error) {
    throw gridkit::led_by(product.path(), error);
  }
}

void warn_of_unread(const Request& request, const std::string& reason, const std::string& lines) {
  warn(shown_name(request.output()) + ": lines of the image " + reason +
       ", in part or in whole, are transparent: " + lines);
}

int save_quicklook(const Host& host, const Request& request) {
  const gridkit::Product product = host.open(request.product());
  check_output(request.output(), OutputFormat::png, request.overwrite, product);
  check_images_to_read(product.path());
  const std::string layer = chosen_layer(product, request);
  const auto calibration = calibration_of_picture(product, layer, request);
  const Quicklook quicklook = [&] {
    Progress progress(product.open_layer(layer).height(), request.quiet);
    return make_quicklook(
        product, layer, request.size, [&](std::int32_t lines) { progress.advance(lines); },
        calibration);
  }();
  const auto picture = gridkit::encode_png(quicklook.picture);
  if (request.output() == standard_output) {
    write_to_standard_output(picture);
  } else {
    gridkit::write_whole_file(request.output(), picture, request.overwrite);
  }
  if (!quicklook.spacing) {
    warn(shown_name(request.output()) +
         ": has the pixels' own aspect: " + quicklook.why_no_spacing);
  }
  for (const auto& [reason, lines, key] : unread_lines(quicklook.missing)) {
    warn_of_unread(request, reason, lines);
  }
  return 0;
}

}  // namespace

void add_quicklook(CLI::App& app, Action& chosen) {
  const auto request = std::make_shared<Request>();
  CLI::App* command = app.add_subcommand("quicklook", "Make a small picture of a layer");
  command->footer(footer);
  command
      ->add_option(
          "PRODUCT [LAYER] OUT.png", request->names,
          "The product, a layer's name (without it the first layer), and the PNG file, or -")
      ->required()
      ->expected(2, 3);
  take_range(
      command
          ->add_option("--size", request->size,
                       "Most pixels on the longer side, " + std::to_string(smallest_picture) +
                           " to " + std::to_string(largest_picture))
          ->capture_default_str(),
      "PIXELS", smallest_picture, largest_picture);
  auto* calibrate = command->add_option("--calibrate", request->calibration,
                                        "Backscatter instead of magnitudes; -db: in decibels");
  take_one_of(calibrate, calibration_names());
  command
      ->add_flag("--subtract-noise", request->subtract_noise,
                 "Without the instrument's own noise, by the product's noise records")
      ->needs(calibrate);
  command->add_flag("--overwrite", request->overwrite, "Replace an output that exists");
  command->add_flag("-q,--quiet", request->quiet, "No progress bar");
  command->callback([request, &chosen] {
    const std::string& output = request->output();
    if (!std::filesystem::path(output).extension().empty() &&
        !gridkit::has_ending(output, ".png")) {
      throw CLI::ValidationError(
          "OUT.png", "the ending of \"" + output + "\" is not .png, and the picture is a PNG file");
    }
    chosen = [request](const Host& host) { return save_quicklook(host, *request); };
  });
}
