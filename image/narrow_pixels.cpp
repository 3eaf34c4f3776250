#include "image/narrow_pixels.h"

#include <cstddef>
#include <cstring>

#include "conversion/conversion.h"

void tsx_NarrowPixels(const gkl_PixelRect& rect, std::int32_t width, std::int32_t height,
                      std::uint16_t* pixels) {
  const auto count = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
  const bool is_aligned = reinterpret_cast<std::uintptr_t>(rect.data) % alignof(double) == 0;
  // Lines without a gap between them are one.
  if (rect.columnStride == sizeof(double) && rect.rowStride == rect.columnStride * width &&
      is_aligned) {
    conversion::narrow(static_cast<const double*>(rect.data), pixels, count);
    return;
  }
  for (std::int32_t line = 0; line < height; ++line) {
    for (std::int32_t column = 0; column < width; ++column, ++pixels) {
      double value = 0;
      std::memcpy(
          &value,
          static_cast<const char*>(rect.data) + rect.rowStride * line + rect.columnStride * column,
          sizeof value);
      conversion::narrow(&value, pixels, 1);
    }
  }
}
