#include "gridkit/page_cache.h"

#include <algorithm>
#include <bit>
#include <new>

namespace gridkit {

// The memory is one piece that the system backs page by page as it is written to, so a cache that
// is never filled costs next to nothing.
bool PageCache::allocate() try {
  constexpr std::size_t alignment = 4096;
  std::vector<Slot> slots(most_pages_);
  heads_.assign(std::bit_ceil(2 * most_pages_), none);
  memory_.reset(static_cast<std::byte*>(std::aligned_alloc(alignment, most_pages_ * page_bytes)));
  if (memory_ != nullptr) slots_.swap(slots);
  return memory_ != nullptr;
} catch (const std::bad_alloc&) {
  return false;
}

void PageCache::unlink(std::uint32_t index) {
  std::uint32_t* link = &heads_[bucket(slots_[index].page)];
  while (*link != index) link = &slots_[*link].next;
  *link = slots_[index].next;
}

std::uint32_t PageCache::take_slot() {
  const auto count = static_cast<std::uint32_t>(slots_.size());
  for (;; slots_[sweep_].is_used = false, sweep_ = (sweep_ + 1) % count) {
    if (!slots_[sweep_].is_used) break;
  }
  const std::uint32_t taken = sweep_;
  sweep_ = (sweep_ + 1) % count;
  if (slots_[taken].page >= 0) unlink(taken);
  return taken;
}

std::byte* PageCache::place(std::int64_t offset) {
  if (most_pages_ == 0) return nullptr;
  if (slots_.empty() && !allocate()) {
    most_pages_ = 0;  // not asked for again
    return nullptr;
  }
  const std::int64_t page = offset / page_size;
  last_ = slot_of(page);
  if (last_ != none) {
    slots_[last_].size = 0;
  } else {
    last_ = take_slot();
    slots_[last_] = {page, 0, heads_[bucket(page)], true};
    heads_[bucket(page)] = last_;
  }
  return room(last_);
}

void PageCache::forget() {
  std::fill(slots_.begin(), slots_.end(), Slot());
  std::fill(heads_.begin(), heads_.end(), none);
}

}  // namespace gridkit
