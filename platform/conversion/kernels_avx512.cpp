#include "conversion/kernels.h"

namespace conversion {

namespace {
#include "conversion/kernel_table.inc"
}  // namespace

extern const Kernels avx512_kernels;
const Kernels avx512_kernels = kernels_of("AVX-512");

}  // namespace conversion
