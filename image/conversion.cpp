#include "image/conversion.h"

#include <cstring>

#include "image/conversion_kernels.h"

extern const ConversionKernels baseline_kernels;
#ifdef __x86_64__
extern const ConversionKernels avx2_kernels;
extern const ConversionKernels avx512_kernels;
#endif

namespace {

// The instruction sets contain each other, so what the machine has is the start of one list.
constexpr const ConversionKernels* all_kernels[] = {
    &baseline_kernels,
#ifdef __x86_64__
    &avx2_kernels,
    &avx512_kernels,
#endif
};

std::size_t supported() {
#ifdef __x86_64__
  const bool avx2 = __builtin_cpu_supports("avx2") != 0 && __builtin_cpu_supports("fma") != 0;
  const bool avx512 =
      __builtin_cpu_supports("avx512f") != 0 && __builtin_cpu_supports("avx512bw") != 0 &&
      __builtin_cpu_supports("avx512dq") != 0 && __builtin_cpu_supports("avx512vl") != 0;
  if (avx2) return avx512 ? 3 : 2;
#endif
  return 1;
}

const ConversionKernels& fastest() {
  static const ConversionKernels& kernels = *tsx_ConversionKernels().back();
  return kernels;
}

}  // namespace

std::span<const ConversionKernels* const> tsx_ConversionKernels() {
  static const std::size_t count = supported();
  return std::span(all_kernels).first(count);
}

void tsx_SplitLine(const std::int16_t* line, std::int16_t* i, std::int16_t* q, std::size_t count) {
  fastest().split(line, i, q, count);
}

void tsx_ConvertMagnitude(const std::int16_t* i, const std::int16_t* q, std::uint16_t* pixels,
                          std::size_t count) {
  fastest().magnitude(i, q, pixels, count);
}

void tsx_ConvertPhase(const std::int16_t* i, const std::int16_t* q, std::uint16_t* pixels,
                      std::size_t count) {
  fastest().phase(i, q, pixels, count);
}

void tsx_NarrowPixels(const gkl_PixelRect& rect, std::int32_t width, std::int32_t height,
                      std::uint16_t* pixels) {
  const auto count = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
  const bool is_aligned = reinterpret_cast<std::uintptr_t>(rect.data) % alignof(double) == 0;
  // Lines without a gap between them are one.
  if (rect.columnStride == sizeof(double) && rect.rowStride == rect.columnStride * width &&
      is_aligned) {
    fastest().narrow(static_cast<const double*>(rect.data), pixels, count);
    return;
  }
  for (std::int32_t line = 0; line < height; ++line) {
    for (std::int32_t column = 0; column < width; ++column, ++pixels) {
      double value = 0;
      std::memcpy(
          &value,
          static_cast<const char*>(rect.data) + rect.rowStride * line + rect.columnStride * column,
          sizeof value);
      fastest().narrow(&value, pixels, 1);
    }
  }
}
