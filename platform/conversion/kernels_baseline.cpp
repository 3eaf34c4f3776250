#include "conversion/kernels.h"

namespace conversion {

namespace {
#include "conversion/kernel_table.inc"

// What any machine of the kind runs.
#ifdef __SSE2__
constexpr const char* baseline = "SSE2";
#else
constexpr const char* baseline = "portable";
#endif
}  // namespace

extern const Kernels baseline_kernels;
const Kernels baseline_kernels = kernels_of(baseline);

}  // namespace conversion
