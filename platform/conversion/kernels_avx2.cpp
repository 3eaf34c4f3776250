#include "conversion/kernels.h"

namespace conversion {

namespace {
#include "conversion/pixel_kernels.inc"
#include "conversion/sample_kernels.inc"
}  // namespace

extern const Kernels avx2_kernels;
const Kernels avx2_kernels = {
    "AVX2", split_big_endian, split,        from_big_endian, magnitude, phase,
    narrow, widen_integers,   widen_pixels, widen_halves,    moduli,    angles,
    powers, squares,          scale,        decibels,        weigh,     ramp,
    blend};

}  // namespace conversion
