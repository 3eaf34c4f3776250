#include "conversion/kernels.h"

namespace conversion {

namespace {
#include "conversion/pixel_kernels.inc"
#include "conversion/sample_kernels.inc"

// What any machine of the kind runs.
#ifdef __SSE2__
constexpr const char* baseline = "SSE2";
#else
constexpr const char* baseline = "portable";
#endif
}  // namespace

extern const Kernels baseline_kernels;
const Kernels baseline_kernels = {
    baseline, split_big_endian, split,        from_big_endian, magnitude, phase,
    narrow,   widen_integers,   widen_pixels, widen_halves,    moduli,    angles,
    powers,   squares,          scale,        decibels,        weigh,     ramp,
    blend};

}  // namespace conversion
