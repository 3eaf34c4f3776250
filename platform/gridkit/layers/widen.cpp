#include "gridkit/layers/widen.h"

namespace gridkit {

namespace {

template <class Pixel>
[[gnu::always_inline]] inline void widen_all(const Pixel* __restrict from, double* __restrict to,
                                             std::size_t count) {
  for (std::size_t k = 0; k < count; ++k) to[k] = from[k];
}

#ifdef __x86_64__
// The same loop with vectors of twice the width.
template <class Pixel>
[[gnu::target("avx2")]] void widen_with_avx2(const Pixel* from, double* to, std::size_t count) {
  widen_all(from, to, count);
}
#endif

template <class Pixel>
void widen_any(const Pixel* from, double* to, std::size_t count) {
#ifdef __x86_64__
  if (__builtin_cpu_supports("avx2") != 0) return widen_with_avx2(from, to, count);
#endif
  widen_all(from, to, count);
}

}  // namespace

void widen(const std::uint8_t* from, double* to, std::size_t count) {
  widen_any(from, to, count);
}
void widen(const std::uint16_t* from, double* to, std::size_t count) {
  widen_any(from, to, count);
}
void widen(const std::int16_t* from, double* to, std::size_t count) {
  widen_any(from, to, count);
}

}  // namespace gridkit
