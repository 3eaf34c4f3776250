#include "image/conversion.h"

#include <cmath>
#include <cstring>

void tsx_ConvertMagnitude(const std::int16_t* i, const std::int16_t* q, std::uint16_t* pixels,
                          std::size_t count) {
  for (std::size_t k = 0; k < count; ++k) {
    const auto re = static_cast<float>(i[k]);
    const auto im = static_cast<float>(q[k]);
    const float squares = re * re + im * im;
    pixels[k] = static_cast<std::uint16_t>(static_cast<std::int32_t>(std::sqrt(squares)));
  }
}

void tsx_ConvertPhase(const std::int16_t* i, const std::int16_t* q, std::uint16_t* pixels,
                      std::size_t count) {
  constexpr double per_radian = 10430.3783505;
  for (std::size_t k = 0; k < count; ++k) {
    if (q[k] == 0 || i[k] == 0) {
      pixels[k] = 0;
      continue;
    }
    const auto angle =
        static_cast<float>(std::atan2(static_cast<double>(q[k]), static_cast<double>(i[k])));
    pixels[k] = static_cast<std::uint16_t>(
        static_cast<std::int32_t>(static_cast<double>(angle) * per_radian));
  }
}

void tsx_NarrowPixels(const gkl_PixelRect& rect, std::int32_t width, std::int32_t height,
                      std::uint16_t* pixels) {
  constexpr double limit = 9223372036854775808.0;
  for (std::int32_t line = 0; line < height; ++line) {
    const char* pixel = static_cast<const char*>(rect.data) + rect.rowStride * line;
    for (std::int32_t column = 0; column < width; ++column, pixel += rect.columnStride) {
      double value = 0;
      std::memcpy(&value, pixel, sizeof value);
      const bool is_integer = value > -limit && value < limit;
      *pixels++ = is_integer ? static_cast<std::uint16_t>(static_cast<std::int64_t>(value)) : 0;
    }
  }
}
