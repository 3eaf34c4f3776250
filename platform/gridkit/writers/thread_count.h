#pragma once

#include <cstddef>

namespace gridkit {

// How many threads work side by side where `wanted` are asked for, 0 for one on each processor that
// this process may use: at least 1, and at most 16, as each holds some memory.
std::size_t thread_count(int wanted);

}  // namespace gridkit
