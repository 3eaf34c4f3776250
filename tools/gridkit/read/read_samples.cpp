#include "tools/gridkit/read/read_samples.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <memory>
#include <span>
#include <vector>

#include "gridkit/error.h"
#include "tools/gridkit/product/product_metadata.h"
#include "tools/gridkit/read/calibration.h"
#include "tools/gridkit/read/finish_output.h"
#include "tools/gridkit/read/image_place.h"
#include "tools/gridkit/read/line_ranges.h"
#include "tools/gridkit/terminal/progress.h"

namespace {

using gridkit::NativeType;
using gridkit::SampleForm;
using gridkit::SampleType;

constexpr double not_a_number = std::numeric_limits<double>::quiet_NaN();

// What is written, and what the file tells of it.
struct Plan {
  gridkit::Window window;
  gridkit::Conversion conversion;
  std::optional<Calibration> calibration;
  ImagePlace place;
  SampleType type = SampleType::cs16;
};

SampleType type_of(NativeType type) {
  switch (type) {
    case NativeType::complex_int16:
      return SampleType::cs16;
    case NativeType::complex_half:
      return SampleType::cf32;
    case NativeType::uint16:
      return SampleType::u16;
  }
  return SampleType::cs16;
}

// Where the image's layer lies, if it has one.
ImagePlace place_of_image(const gridkit::Product& product, const gridkit::SampleImage& image,
                          const gridkit::Window& window, bool delays) {
  const auto layers = product.layer_names();
  const auto layer = static_cast<std::size_t>(image.magnitude_layer.value_or(-1));
  if (layer < layers.size()) {
    return place_of(product, product.open_layer(layers[layer]), window, delays);
  }
  ImagePlace place;
  place.not_known = "its lines and samples are not those that the product's sensor model places";
  return place;
}

Plan plan_of(const gridkit::Product& product, const gridkit::Samples& samples, std::size_t number,
             const ImageRequest& request) try {
  const gridkit::SampleImage& image = samples.images()[number];
  Plan plan;
  constexpr std::int64_t most = std::numeric_limits<std::int32_t>::max();
  plan.window = request.window.value_or(
      gridkit::Window{0, 0, static_cast<std::int32_t>(std::min(image.samples, most)),
                      static_cast<std::int32_t>(std::min(image.lines, most))});
  gridkit::check_window(plan.window, image.samples, image.lines);
  plan.type = type_of(image.type);
  if (request.calibration) {
    plan.calibration = calibration_of(product, samples, number, *request.calibration);
    plan.conversion.form =
        plan.calibration->in_decibels() ? SampleForm::decibels : SampleForm::power;
    plan.conversion.radiometry = plan.calibration->radiometry();
    plan.type = SampleType::f32;
  } else if (request.kind == PixelKind::stretched) {
    throw gridkit::Error("samples are not stretched for the eye; read a layer");
  } else if (image.type == NativeType::complex_half) {
    plan.conversion.form = SampleForm::complex_float;
  }
  const bool has_room = request.format != OutputFormat::png && request.output != standard_output;
  if (has_room) plan.place = place_of_image(product, image, plan.window, request.delays);
  if (request.calibration && tells_of_grid(*request.calibration)) plan.place.grid_warning.clear();
  return plan;
} catch (const gridkit::Error& error) {
  throw gridkit::led_by(product.path(), error);
}

gridkit::RasterOptions options_of(const Plan& plan, const gridkit::SampleImage& image,
                                  const ImageRequest& request) {
  gridkit::RasterOptions options;
  options.type = plan.type;
  options.existing = request.overwrite ? gridkit::Existing::replace : gridkit::Existing::refuse;
  options.band_name = plan.calibration ? plan.calibration->band_name() : image.name;
  if (plan.calibration) {
    options.unit = plan.calibration->unit();
    options.no_data = not_a_number;
  }
  options.georeference = plan.place.georeference;
  options.control_points = plan.place.control_points;
  options.rational_model = plan.place.rational_model;
  options.overview = plan.calibration && !plan.calibration->in_decibels()
                         ? gridkit::Overview::average
                         : gridkit::Overview::nearest;
  options.compression = request.compression;
  options.threads = request.threads;
  return options;
}

void describe(gridkit::RasterWriter& writer, const gridkit::Product& product,
              const gridkit::SampleImage& image, const Plan& plan, const ImageRequest& request) {
  for (const auto& [key, value] : product_metadata(product, image.polarisation)) {
    writer.add_metadata(key, value);
  }
  writer.add_metadata("SOURCE", product.path());
  writer.add_metadata("IMAGE", image.name);
  writer.add_metadata("FIRST_COLUMN_AND_LINE",
                      std::to_string(plan.window.column) + ' ' + std::to_string(plan.window.line));
  if (!image.first_line_utc.empty()) {
    writer.add_metadata("FIRST_LINE_OF_IMAGE_UTC", image.first_line_utc);
  }
  if (plan.calibration) {
    for (const auto& [key, value] : plan.calibration->metadata()) writer.add_metadata(key, value);
  }
  if (request.format == OutputFormat::envi) return;
  for (const auto& [key, value] : plan.place.metadata) writer.add_metadata(key, value);
}

// Samples of 0 have no level in decibels; and of lines that did not come whole those of 0, which is
// what stands for missing ones.
void mark_no_data(const Calibration& calibration, std::vector<float>& values, bool complete) {
  const auto is_none = [&](float value) {
    return (calibration.in_decibels() && std::isinf(value)) || (!complete && value == 0);
  };
  std::replace_if(values.begin(), values.end(), is_none, static_cast<float>(not_a_number));
}

}  // namespace

std::optional<std::size_t> find_sample_image(const gridkit::Product& product,
                                             const std::string& name) try {
  const gridkit::Samples samples = product.samples();
  const auto& images = samples.images();
  const auto found = std::find_if(images.begin(), images.end(),
                                  [&](const auto& image) { return image.name == name; });
  if (found == images.end()) return std::nullopt;
  return static_cast<std::size_t>(found - images.begin());
} catch (const gridkit::Error&) {
  return std::nullopt;
}

void read_samples(const gridkit::Product& product, std::size_t number,
                  const ImageRequest& request) {
  check_output(request.output, request.format, request.overwrite, product);
  const gridkit::Samples samples = product.samples();
  const gridkit::SampleImage& image = samples.images()[number];
  if (request.calibration) warn_about_grid(product, *request.calibration);
  const Plan plan = plan_of(product, samples, number, request);
  Progress progress(plan.window.height, request.quiet,
                    request.format == OutputFormat::cog ? 0.5 : 1);
  gridkit::RasterOptions options = options_of(plan, image, request);
  options.progress = [&progress](double done) { return progress.follow(done); };
  const auto writer =
      create_output(request.format, request.output, plan.window.width, plan.window.height, options);
  describe(*writer, product, image, plan, request);
  std::vector<float> calibrated;
  const std::int64_t whole = gridkit::read_in_order(
      samples, number,
      {plan.window.line, plan.window.column, plan.window.height, plan.window.width},
      plan.conversion, [&](std::span<const std::byte> bytes, std::int64_t lines, bool complete) {
        progress.advance(static_cast<std::int32_t>(lines));
        if (plan.calibration) {
          const auto* values = reinterpret_cast<const float*>(bytes.data());
          calibrated.assign(values, values + bytes.size() / sizeof(float));
          mark_no_data(*plan.calibration, calibrated, complete);
          bytes = std::as_bytes(std::span<const float>(calibrated));
        }
        writer->write_lines(bytes, static_cast<std::int32_t>(lines));
      });
  std::vector<UnreadLines> missing;
  if (whole < plan.window.height) {
    missing = unread_lines({{static_cast<std::int32_t>(plan.window.line + whole),
                             plan.window.line + plan.window.height - 1}});
  }
  finish_output(*writer, progress, request.output, plan.place, missing);
}
