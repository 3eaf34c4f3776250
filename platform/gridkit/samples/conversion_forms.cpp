#include "gridkit/samples/conversion_forms.h"

#include <algorithm>
#include <cstring>
#include <span>

#include "conversion/conversion.h"

namespace gridkit {

namespace {

// What is between two steps of a conversion stays in the first-level cache.
constexpr std::size_t samples_at_once = 1024;

std::size_t native_bytes(NativeType type) {
  return type == NativeType::uint16 ? 2 : 4;
}

}  // namespace

std::size_t form_bytes(SampleForm form, NativeType type) {
  switch (form) {
    case SampleForm::native:
      return native_bytes(type);
    case SampleForm::complex_float:
      return 8;
    case SampleForm::magnitude16:
    case SampleForm::phase16:
      return 2;
    default:
      return 4;
  }
}

std::string refusal_of_form(SampleForm form, NativeType type) {
  const bool is_16_bits = form == SampleForm::magnitude16 || form == SampleForm::phase16;
  if (type == NativeType::complex_half && is_16_bits) {
    return "its samples are half-precision numbers, which have no 16-bit pixels; ask for floats";
  }
  const bool needs_pairs =
      form == SampleForm::complex_float || form == SampleForm::phase || form == SampleForm::phase16;
  if (type == NativeType::uint16 && needs_pairs) {
    return "its samples are detected amplitudes, which have no phase";
  }
  return {};
}

Converter::Converter(const Conversion& conversion, NativeType type, const SampleWindow& window)
    : conversion_(conversion),
      type_(type),
      planes_(2 * samples_at_once),
      floats_(2 * samples_at_once),
      powers_(samples_at_once) {
  if (conversion.radiometry == nullptr) return;
  weighed_.resize(samples_at_once);
  radiometry_.emplace(conversion.radiometry, window.sample, window.sample_step);
}

void Converter::convert(LinePart part, const std::byte* native, std::byte* converted,
                        std::size_t count) {
  const std::size_t from_bytes = native_bytes(type_);
  const std::size_t to_bytes = form_bytes(conversion_.form, type_);
  for (std::size_t done = 0; done < count; done += samples_at_once) {
    convert_some({part.line, part.index + done}, native + done * from_bytes,
                 converted + done * to_bytes, std::min(count - done, samples_at_once));
  }
}

void Converter::widen(const std::byte* native, float* floats, std::size_t count) const {
  switch (type_) {
    case NativeType::complex_int16:
      conversion::widen_integers(reinterpret_cast<const std::int16_t*>(native), floats, 2 * count);
      return;
    case NativeType::complex_half:
      conversion::widen_halves(reinterpret_cast<const std::uint16_t*>(native), floats, 2 * count);
      return;
    case NativeType::uint16:
      conversion::widen_pixels(reinterpret_cast<const std::uint16_t*>(native), floats, count);
      return;
  }
}

void Converter::take_powers(const float* floats, std::size_t count) {
  if (type_ == NativeType::uint16) {
    conversion::squares(floats, powers_.data(), count);
  } else {
    conversion::powers(floats, powers_.data(), count);
  }
}

void Converter::convert_pairs(const std::int16_t* native, std::uint16_t* pixels,
                              std::size_t count) {
  std::int16_t* const i = planes_.data();
  std::int16_t* const q = i + samples_at_once;
  conversion::split(native, i, q, count);
  (conversion_.form == SampleForm::phase16 ? conversion::phase : conversion::magnitude)(
      i, q, pixels, count);
}

void Converter::convert_powers(LinePart part, float* converted, std::size_t count) {
  const auto convert =
      conversion_.form == SampleForm::power ? conversion::scale : conversion::decibels;
  if (!radiometry_) return convert(powers_.data(), conversion_.factor, converted, count);
  radiometry_->weigh(part.line, part.index, std::span(powers_).first(count),
                     std::span(weighed_).first(count));
  convert(weighed_.data(), 1, converted, count);
}

void Converter::convert_some(LinePart part, const std::byte* native, std::byte* converted,
                             std::size_t count) {
  const bool is_pixel = type_ == NativeType::uint16;
  auto* const floats = reinterpret_cast<float*>(converted);
  switch (conversion_.form) {
    case SampleForm::native:
      std::memcpy(converted, native, count * native_bytes(type_));
      return;
    case SampleForm::complex_float:
      widen(native, floats, count);
      return;
    case SampleForm::magnitude:
      if (is_pixel) return widen(native, floats, count);
      widen(native, floats_.data(), count);
      conversion::moduli(floats_.data(), floats, count);
      return;
    case SampleForm::phase:
      widen(native, floats_.data(), count);
      conversion::angles(floats_.data(), floats, count);
      return;
    case SampleForm::power:
    case SampleForm::decibels:
      widen(native, floats_.data(), count);
      take_powers(floats_.data(), count);
      convert_powers(part, floats, count);
      return;
    case SampleForm::magnitude16:
    case SampleForm::phase16:
      if (is_pixel) {
        std::memcpy(converted, native, count * sizeof(std::uint16_t));
      } else {
        convert_pairs(reinterpret_cast<const std::int16_t*>(native),
                      reinterpret_cast<std::uint16_t*>(converted), count);
      }
      return;
  }
}

}  // namespace gridkit
