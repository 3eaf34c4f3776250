#pragma once

#include <cstdint>

namespace gridkit {

// Of the numbers from `first` to below `end`, the first for which `comes` is false; `end` where
// there is none. Sought by halves: from the first that does not come on, none does.
template <class Comes>
std::int64_t first_refused(std::int64_t first, std::int64_t end, Comes comes) {
  while (first < end) {
    const std::int64_t middle = first + (end - first) / 2;
    if (comes(middle)) {
      first = middle + 1;
    } else {
      end = middle;
    }
  }
  return first;
}

}  // namespace gridkit
