#include "conversion/kernels.h"

namespace conversion {

namespace {
#include "conversion/kernel_table.inc"
}  // namespace

extern const Kernels avx2_kernels;
const Kernels avx2_kernels = kernels_of("AVX2");

}  // namespace conversion
