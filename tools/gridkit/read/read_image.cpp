#include "tools/gridkit/read/read_image.h"

#include <algorithm>
#include <cstdio>
#include <memory>
#include <span>
#include <vector>

#include "gridkit/error.h"
#include "tools/gridkit/product/product_metadata.h"
#include "tools/gridkit/read/calibration.h"
#include "tools/gridkit/read/finish_output.h"
#include "tools/gridkit/read/image_place.h"
#include "tools/gridkit/read/line_ranges.h"
#include "tools/gridkit/read/pixel_form.h"
#include "tools/gridkit/terminal/progress.h"

namespace {

// What is written, and what the file tells of it.
struct Plan {
  gridkit::Window window;
  bool is_phase = false;
  ImagePlace place;
  std::optional<Calibration> calibration;
  std::unique_ptr<PixelForm> form;

  bool is_mapped() const { return place.georeference.has_value(); }
};

Plan plan_of(const gridkit::Product& product, const ImageRequest& request) try {
  Plan plan;
  const gridkit::Layer layer = product.open_layer(request.layer);
  plan.window = request.window.value_or(gridkit::Window{0, 0, layer.width(), layer.height()});
  gridkit::check_window(layer, plan.window);
  plan.is_phase = layer.pixel_type() == "s16";
  // A PNG has no room for its place, nor have samples alone.
  const bool has_room = request.format != OutputFormat::png && request.output != standard_output;
  if (has_room) plan.place = place_of(product, layer, plan.window, request.delays);
  if (request.calibration && tells_of_grid(*request.calibration)) plan.place.grid_warning.clear();
  if (request.calibration) {
    plan.calibration = calibration_of(product, layer, *request.calibration);
    plan.form = calibrated(*plan.calibration, plan.window, plan.is_mapped());
  } else if (request.kind == PixelKind::stretched) {
    plan.form = stretched(product, request.layer, plan.window, plan.is_phase);
  } else {
    plan.form = own_values(plan.is_phase);
  }
  return plan;
} catch (const gridkit::Error& error) {
  throw gridkit::led_by(product.path(), error);
}

// The mean of powers; that of magnitudes or decibels would be too low.
gridkit::Overview overview_of(const Plan& plan, PixelKind kind) {
  if (plan.is_phase || (plan.calibration && plan.calibration->in_decibels())) {
    return gridkit::Overview::nearest;
  }
  const bool is_amplitude = !plan.calibration && kind == PixelKind::own;
  return is_amplitude ? gridkit::Overview::root_mean_square : gridkit::Overview::average;
}

gridkit::RasterOptions options_of(const Plan& plan, const ImageRequest& request) {
  gridkit::RasterOptions options;
  options.type = plan.form->type();
  options.existing = request.overwrite ? gridkit::Existing::replace : gridkit::Existing::refuse;
  options.band_name = plan.calibration ? plan.calibration->band_name() : request.layer;
  if (plan.calibration) options.unit = plan.calibration->unit();
  options.georeference = plan.place.georeference;
  options.control_points = plan.place.control_points;
  options.rational_model = plan.place.rational_model;
  options.no_data = plan.form->no_data(plan.is_mapped(), false);
  options.overview = overview_of(plan, request.kind);
  options.compression = request.compression;
  options.threads = request.threads;
  return options;
}

void describe(gridkit::RasterWriter& writer, const gridkit::Product& product, const Plan& plan,
              const ImageRequest& request) {
  for (const auto& [key, value] :
       product_metadata(product, polarisation_of_layer(product, request.layer))) {
    writer.add_metadata(key, value);
  }
  writer.add_metadata("SOURCE", product.path());
  writer.add_metadata("LAYER", request.layer);
  writer.add_metadata("FIRST_COLUMN_AND_LINE",
                      std::to_string(plan.window.column) + ' ' + std::to_string(plan.window.line));
  if (plan.calibration) {
    for (const auto& [key, value] : plan.calibration->metadata()) writer.add_metadata(key, value);
  }
  if (request.kind == PixelKind::stretched) {
    writer.add_metadata("STRETCH", "8 bits for the eye, not for measuring");
  }
  if (request.format == OutputFormat::envi) return;
  for (const auto& [key, value] : plan.place.metadata) writer.add_metadata(key, value);
}

}  // namespace

void read_image(const gridkit::Product& product, const ImageRequest& request) {
  check_output(request.output, request.format, request.overwrite, product);
  if (request.calibration) warn_about_grid(product, *request.calibration);
  const Plan plan = plan_of(product, request);
  // A cloud-optimised file takes a second pass over all that was written.
  Progress progress(plan.window.height, request.quiet,
                    request.format == OutputFormat::cog ? 0.5 : 1);
  gridkit::RasterOptions options = options_of(plan, request);
  options.progress = [&progress](double done) { return progress.follow(done); };
  // Made with the first lines: a window that turns out to be no image has no file, which for the
  // number of lines that an annotation may state would take much memory.
  std::unique_ptr<gridkit::RasterWriter> writer;
  const auto missing = gridkit::read_window(
      product, request.layer, plan.window,
      [&](std::span<const std::uint16_t> pixels, std::int32_t lines, bool complete) {
        if (writer == nullptr) {
          writer = create_output(request.format, request.output, plan.window.width,
                                 plan.window.height, options);
          describe(*writer, product, plan, request);
        }
        progress.advance(lines);
        writer->write_lines((*plan.form)(pixels, complete), lines);
      });
  if (!missing.empty()) {
    if (const auto value = plan.form->no_data(plan.is_mapped(), true)) writer->set_no_data(*value);
  }
  finish_output(*writer, progress, request.output, plan.place, unread_lines(missing));
}
