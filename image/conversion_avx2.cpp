#include "image/conversion_kernels.h"

namespace {
#include "image/conversion_kernel.inc"
}  // namespace

extern const ConversionKernels avx2_kernels;
const ConversionKernels avx2_kernels = {"AVX2", split, magnitude, phase, narrow};
