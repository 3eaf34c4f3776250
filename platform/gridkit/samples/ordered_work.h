#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>

namespace gridkit {

// Work that falls into numbered parts, done on several threads and taken up in the parts' order on
// the calling thread. `workers` threads call `work(part, slot)`; the calling thread calls
// `take(part, slot)` for part 0, 1, ... as each is done. A slot, from 0 to slots_for(workers) - 1,
// belongs to one part from the begin of its work until it was taken, and then to another: results
// are kept by slot. With one worker everything happens on the calling thread.
//
// What work or take throws ends all and leaves this function, for the first part concerned, after
// all threads have stopped. Where threads cannot be had there are fewer.
void work_in_order(std::int64_t parts, std::size_t workers,
                   const std::function<void(std::int64_t part, std::size_t slot)>& work,
                   const std::function<void(std::int64_t part, std::size_t slot)>& take);

// The slots of that many workers: some parts wait to be taken while others are worked on.
constexpr std::size_t slots_for(std::size_t workers) {
  return workers <= 1 ? 1 : workers + 1;
}

// As many workers as this process may use processors, at most 16.
std::size_t usual_workers();

}  // namespace gridkit
