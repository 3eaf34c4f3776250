#pragma once

#include <cstdint>

#include "gridkit/c/open_product.h"
#include "gridkit/gridkit.h"
#include "gridkit/samples.h"

// What the functions that read windows share.

namespace gridkit::c {

// A caller's wishes, checked as far as that can be without an image. Throw the fault of wrong use.
SampleWindow window_of(const gridkit_window* given);
SampleTarget target_of(const gridkit_target* given);
std::size_t threads_of(std::int32_t threads);

// Passes lines on to a caller's progress function.
ReadManner manner_of(const gridkit_read_options& options, std::int64_t lines);

// Does a read that sets how far it came, and tells that to the caller however the read ends.
template <class Read>
void deliver(gridkit_delivered* target, Read read) {
  Delivered delivered;
  const auto tell = [&] {
    if (target != nullptr) fill(target, gridkit_delivered{0, delivered.lines, delivered.samples});
  };
  if (target != nullptr) check_filled(target, "delivered");
  tell();
  try {
    read(delivered);
  } catch (...) {
    tell();
    throw;
  }
  tell();
}

}  // namespace gridkit::c
