// Images of a product and windows of their samples.

#include <optional>
#include <string>

#include "gridkit/c/reading.h"

namespace {

using gridkit::NativeType;
using gridkit::SampleForm;
using gridkit::SampleImage;
using gridkit::c::Fault;
using gridkit::c::OpenProduct;
using gridkit::c::require;

std::int32_t code_of(NativeType type) {
  switch (type) {
    case NativeType::complex_int16:
      return gridkit_ComplexInt16;
    case NativeType::complex_half:
      return gridkit_ComplexHalf;
    case NativeType::uint16:
      return gridkit_Uint16;
  }
  return 0;
}

SampleForm form_of(std::int32_t form) {
  switch (form) {
    case gridkit_Native:
      return SampleForm::native;
    case gridkit_ComplexFloat:
      return SampleForm::complex_float;
    case gridkit_Magnitude:
      return SampleForm::magnitude;
    case gridkit_Phase:
      return SampleForm::phase;
    case gridkit_Power:
      return SampleForm::power;
    case gridkit_Decibels:
      return SampleForm::decibels;
    case gridkit_Magnitude16:
      return SampleForm::magnitude16;
    case gridkit_Phase16:
      return SampleForm::phase16;
    default:
      throw Fault(gridkit_WrongUse, "form is " + std::to_string(form) + ", which is none");
  }
}

std::size_t number_of(const OpenProduct& product, const gridkit::Samples& samples,
                      std::int32_t image) {
  const auto& images = samples.images();
  if (image >= 0 && static_cast<std::size_t>(image) < images.size()) {
    return static_cast<std::size_t>(image);
  }
  throw Fault(gridkit_WrongUse,
              product.path() + ": no image " + std::to_string(image) + "; it has " +
                  std::to_string(images.size()),
              product.path());
}

gridkit_image described(const SampleImage& image) {
  gridkit_image filled{};
  filled.name = image.name.c_str();
  filled.polarisation = image.polarisation.c_str();
  filled.file = image.file.c_str();
  filled.lines = image.lines;
  filled.samples = image.samples;
  filled.sample_type = code_of(image.type);
  filled.burst = image.burst.value_or(0);
  filled.first_line_utc = image.first_line_utc.c_str();
  filled.calibration_factor = image.calibration_factor;
  filled.magnitude_layer = image.magnitude_layer.value_or(-1);
  filled.phase_layer = image.phase_layer.value_or(-1);
  filled.image_file = image.image_file;
  return filled;
}

bool needs_complex(SampleForm form) {
  return form == SampleForm::complex_float || form == SampleForm::phase ||
         form == SampleForm::phase16;
}

bool measures_quantity(SampleForm form) {
  return form == SampleForm::power || form == SampleForm::decibels;
}

// Nothing for the intensity.
std::optional<gridkit::RadiometryRequest> radiometry_asked(const gridkit_read_options& options) {
  const bool subtract_noise = gridkit::c::chosen(options.subtract_noise, false, "subtract_noise");
  switch (options.quantity) {
    case gridkit_Intensity:
      if (!subtract_noise) return std::nullopt;
      throw Fault(gridkit_WrongUse, "noise is subtracted from calibrated quantities alone");
    case gridkit_Beta0:
      return gridkit::RadiometryRequest{gridkit::Backscatter::beta0, subtract_noise};
    case gridkit_Sigma0:
      return gridkit::RadiometryRequest{gridkit::Backscatter::sigma0, subtract_noise};
    case gridkit_Gamma0:
      return gridkit::RadiometryRequest{gridkit::Backscatter::gamma0, subtract_noise};
    default:
      throw Fault(gridkit_WrongUse,
                  "quantity is " + std::to_string(options.quantity) + ", which is none");
  }
}

gridkit::Conversion conversion_of(OpenProduct& product, std::size_t image,
                                  const gridkit_read_options& options) {
  gridkit::Conversion conversion;
  conversion.form = form_of(options.form);
  const auto asked = radiometry_asked(options);
  if (asked && !measures_quantity(conversion.form)) {
    throw Fault(gridkit_WrongUse, "a calibrated quantity has the form of powers or decibels");
  }
  if (asked) conversion.radiometry = product.radiometry(image, *asked);
  return conversion;
}

void require_form(SampleForm form, const SampleImage& image) {
  if (image.is_complex() || !needs_complex(form)) return;
  throw Fault(gridkit_WrongUse,
              image.file + ": the image " + image.name + " is detected and has no phases",
              image.file);
}

}  // namespace

int32_t gridkit_image_count(const gridkit_product* product, int32_t* count, gridkit_error** error) {
  if (count != nullptr) *count = 0;
  return gridkit::c::contain(product, error, gridkit_CannotRead, [&](OpenProduct& open) {
    require(count, "count");
    *count = static_cast<int32_t>(open.samples().images().size());
  });
}

int32_t gridkit_get_image(const gridkit_product* product, int32_t number, gridkit_image* image,
                          gridkit_error** error) {
  return gridkit::c::contain(product, error, gridkit_CannotRead, [&](OpenProduct& open) {
    gridkit::c::check_filled(image, "image");
    const gridkit::Samples& samples = open.samples();
    gridkit::c::fill(image, described(samples.images()[number_of(open, samples, number)]));
  });
}

size_t gridkit_form_bytes(int32_t form, int32_t sample_type) {
  for (const NativeType type :
       {NativeType::complex_int16, NativeType::complex_half, NativeType::uint16}) {
    if (code_of(type) != sample_type) continue;
    if (form < gridkit_Native || form > gridkit_Phase16) return 0;
    const SampleForm wanted = form_of(form);
    if (type == NativeType::uint16 && needs_complex(wanted)) return 0;
    return gridkit::form_bytes(wanted, type);
  }
  return 0;
}

int32_t gridkit_read_samples(const gridkit_product* product, int32_t image,
                             const gridkit_window* window, const gridkit_target* target,
                             const gridkit_read_options* options, gridkit_delivered* delivered,
                             gridkit_error** error) {
  return gridkit::c::contain(product, error, gridkit_CannotRead, [&](OpenProduct& open) {
    gridkit::c::deliver(delivered, [&](gridkit::Delivered& came) {
      const auto wanted = gridkit::c::taken(options, "options");
      const auto part = gridkit::c::window_of(window);
      const auto place = gridkit::c::target_of(target);
      const auto manner = gridkit::c::manner_of(wanted, part.lines);
      const gridkit::Samples& samples = open.samples();
      const std::size_t number = number_of(open, samples, image);
      require_form(form_of(wanted.form), samples.images()[number]);
      samples.check_window(number, part);
      const gridkit::Conversion conversion = conversion_of(open, number, wanted);
      gridkit::read_on_threads(samples, number, part, conversion, place, manner, came);
    });
  });
}
