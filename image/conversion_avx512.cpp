#include "image/conversion_kernels.h"

namespace {
#include "image/conversion_kernel.inc"
}  // namespace

extern const ConversionKernels avx512_kernels;
const ConversionKernels avx512_kernels = {"AVX-512", split, magnitude, phase, narrow};
