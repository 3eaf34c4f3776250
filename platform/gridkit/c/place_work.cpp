#include "gridkit/c/place_work.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <utility>

#include "gridkit/c/reading.h"
#include "gridkit/samples/ordered_work.h"

namespace gridkit::c {

namespace {

// Some milliseconds of work.
constexpr std::size_t places_at_once = 4096;

}  // namespace

BorrowedPlacement::~BorrowedPlacement() {
  product_.give_back(std::move(placement_), with_delays_);
}

void for_each_place(OpenProduct& product, const gridkit_place_options* options, std::size_t count,
                    const OnePlace& one, std::size_t* without) {
  const auto wanted = taken(options, "options");
  const bool with_delays = chosen(wanted.delays, true, "delays");
  std::atomic<std::size_t> unplaced = 0;
  const auto work = [&](std::int64_t part, std::size_t) {
    const BorrowedPlacement placement(product, with_delays);
    const std::size_t first = static_cast<std::size_t>(part) * places_at_once;
    std::size_t failed = 0;
    for (std::size_t i = first; i < std::min(count, first + places_at_once); ++i) {
      try {
        if (!one(*placement, i)) ++failed;
      } catch (const Error&) {
        ++failed;
      }
    }
    unplaced += failed;
  };
  const auto take = [&](std::int64_t part, std::size_t) {
    if (wanted.progress == nullptr) return;
    const std::size_t done = std::min(count, (static_cast<std::size_t>(part) + 1) * places_at_once);
    if (wanted.progress(wanted.context, static_cast<std::int64_t>(done),
                        static_cast<std::int64_t>(count)) != 0) {
      throw Cancelled("placing was cancelled after " + std::to_string(done) + " of " +
                      std::to_string(count) + " places");
    }
  };
  const std::size_t threads = threads_of(wanted.threads);
  if (count == 0) {
    const BorrowedPlacement placed(product, with_delays);  // for its refusal
    return;
  }
  work_in_order(static_cast<std::int64_t>((count + places_at_once - 1) / places_at_once), threads,
                work, take);
  if (without != nullptr) *without = unplaced;
}

}  // namespace gridkit::c
