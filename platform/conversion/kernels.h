#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#ifdef __x86_64__
#include <immintrin.h>
#endif

namespace conversion {

// The loops over samples and pixels, compiled once for each instruction set that pays: one source,
// kernel_table.inc. All give the same bits, those that conversion.h tells.
// `count` may be anything; targets overlap no sources.
struct Kernels {
  const char* name;  // of the instruction set

  void (*split_big_endian)(const std::int16_t* line, std::int16_t* i, std::int16_t* q,
                           std::size_t count);
  void (*split)(const std::int16_t* samples, std::int16_t* i, std::int16_t* q, std::size_t count);
  void (*from_big_endian)(std::uint16_t* values, std::size_t count);
  void (*magnitude)(const std::int16_t* i, const std::int16_t* q, std::uint16_t* pixels,
                    std::size_t count);
  void (*phase)(const std::int16_t* i, const std::int16_t* q, std::uint16_t* pixels,
                std::size_t count);
  void (*narrow)(const double* values, std::uint16_t* pixels, std::size_t count);

  void (*widen_integers)(const std::int16_t* values, float* floats, std::size_t count);
  void (*widen_pixels)(const std::uint16_t* values, float* floats, std::size_t count);
  void (*widen_halves)(const std::uint16_t* values, float* floats, std::size_t count);
  void (*moduli)(const float* samples, float* moduli, std::size_t count);
  void (*angles)(const float* samples, float* angles, std::size_t count);
  void (*powers)(const float* samples, double* powers, std::size_t count);
  void (*squares)(const float* values, double* squares, std::size_t count);
  void (*scale)(const double* powers, double factor, float* scaled, std::size_t count);
  void (*decibels)(const double* powers, double factor, float* decibels, std::size_t count);
  void (*weigh)(const double* powers, double factor, const double* noise, const double* gains,
                double* weighed, std::size_t count);
  void (*ramp)(double first, double slope, double* values, std::size_t count);
  void (*blend)(const double* a, const double* b, double weight, double* blended,
                std::size_t count);
};

// Those that this machine runs, the fastest last.
std::span<const Kernels* const> available_kernels();

}  // namespace conversion
