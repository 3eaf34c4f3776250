#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#ifdef __x86_64__
#include <immintrin.h>
#endif

// The loops over samples and pixels, compiled once for each instruction set that pays: one source,
// conversion_kernel.inc. All give the same bits, those that conversion.h tells. `count` may be
// anything; targets overlap no sources.
struct ConversionKernels {
  const char* name;  // of the instruction set

  // `count` samples of a line in the file's form, I then Q with the most significant byte first, to
  // two planes in host order.
  void (*split)(const std::int16_t* line, std::int16_t* i, std::int16_t* q, std::size_t count);

  void (*magnitude)(const std::int16_t* i, const std::int16_t* q, std::uint16_t* pixels,
                    std::size_t count);
  void (*phase)(const std::int16_t* i, const std::int16_t* q, std::uint16_t* pixels,
                std::size_t count);
  void (*narrow)(const double* values, std::uint16_t* pixels, std::size_t count);
};

// Those that this machine runs, the fastest last.
std::span<const ConversionKernels* const> tsx_ConversionKernels();
