#include "conversion/conversion.h"

#include "conversion/kernels.h"

namespace conversion {

extern const Kernels baseline_kernels;
#ifdef __x86_64__
extern const Kernels avx2_kernels;
extern const Kernels avx512_kernels;
#endif

namespace {

// The instruction sets contain each other, so what the machine has is the start of one list.
constexpr const Kernels* all_kernels[] = {
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

const Kernels& fastest() {
  static const Kernels& kernels = *available_kernels().back();
  return kernels;
}

}  // namespace

std::span<const Kernels* const> available_kernels() {
  static const std::size_t count = supported();
  return std::span(all_kernels).first(count);
}

void split_big_endian(const std::int16_t* line, std::int16_t* i, std::int16_t* q,
                      std::size_t count) {
  fastest().split_big_endian(line, i, q, count);
}

void split(const std::int16_t* samples, std::int16_t* i, std::int16_t* q, std::size_t count) {
  fastest().split(samples, i, q, count);
}

void from_big_endian(std::uint16_t* values, std::size_t count) {
  fastest().from_big_endian(values, count);
}

void magnitude(const std::int16_t* i, const std::int16_t* q, std::uint16_t* pixels,
               std::size_t count) {
  fastest().magnitude(i, q, pixels, count);
}

void phase(const std::int16_t* i, const std::int16_t* q, std::uint16_t* pixels, std::size_t count) {
  fastest().phase(i, q, pixels, count);
}

void narrow(const double* values, std::uint16_t* pixels, std::size_t count) {
  fastest().narrow(values, pixels, count);
}

void widen_integers(const std::int16_t* values, float* floats, std::size_t count) {
  fastest().widen_integers(values, floats, count);
}

void widen_pixels(const std::uint16_t* values, float* floats, std::size_t count) {
  fastest().widen_pixels(values, floats, count);
}

void widen_halves(const std::uint16_t* values, float* floats, std::size_t count) {
  fastest().widen_halves(values, floats, count);
}

void moduli(const float* samples, float* moduli, std::size_t count) {
  fastest().moduli(samples, moduli, count);
}

void angles(const float* samples, float* angles, std::size_t count) {
  fastest().angles(samples, angles, count);
}

void powers(const float* samples, double* powers, std::size_t count) {
  fastest().powers(samples, powers, count);
}

void squares(const float* values, double* squares, std::size_t count) {
  fastest().squares(values, squares, count);
}

void scale(const double* powers, double factor, float* scaled, std::size_t count) {
  fastest().scale(powers, factor, scaled, count);
}

void decibels(const double* powers, double factor, float* decibels, std::size_t count) {
  fastest().decibels(powers, factor, decibels, count);
}

void weigh(const double* powers, double factor, const double* noise, const double* gains,
           double* weighed, std::size_t count) {
  fastest().weigh(powers, factor, noise, gains, weighed, count);
}

void ramp(double first, double slope, double* values, std::size_t count) {
  fastest().ramp(first, slope, values, count);
}

void blend(const double* a, const double* b, double weight, double* blended, std::size_t count) {
  fastest().blend(a, b, weight, blended, count);
}

}  // namespace conversion
