#include "gridkit/writers/thread_count.h"

#include <algorithm>

#include <sched.h>

namespace gridkit {

namespace {

constexpr int most = 16;

int usable_processors() {
  cpu_set_t processors;
  CPU_ZERO(&processors);
  return ::sched_getaffinity(0, sizeof processors, &processors) == 0 ? CPU_COUNT(&processors) : 1;
}

}  // namespace

std::size_t thread_count(int wanted) {
  return static_cast<std::size_t>(std::clamp(wanted > 0 ? wanted : usable_processors(), 1, most));
}

}  // namespace gridkit
