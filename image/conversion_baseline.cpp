#include "image/conversion_kernels.h"

namespace {
#include "image/conversion_kernel.inc"
}  // namespace

// What any machine of the kind runs.
#ifdef __SSE2__
constexpr const char* baseline = "SSE2";
#else
constexpr const char* baseline = "portable";
#endif

extern const ConversionKernels baseline_kernels;
const ConversionKernels baseline_kernels = {baseline, split, magnitude, phase, narrow};
