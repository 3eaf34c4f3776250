#include "gridkit/services/page_cache.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <new>
#include <utility>

namespace gridkit {

namespace {

// Brings bytes that are likely to be read next into the processor's own cache.
void prefetch(const std::byte* bytes, std::size_t count) {
  constexpr std::size_t cache_line = 64;
  for (std::size_t i = 0; i < count; i += cache_line) __builtin_prefetch(bytes + i);
}

}  // namespace

// The slot of a held page, or `none`.
std::uint32_t PageCache::slot_of(std::int64_t page) const {
  std::uint32_t index = heads_[bucket(page)];
  while (index != none && slots_[index].page != page) index = slots_[index].next;
  return index;
}

std::size_t PageCache::read(std::int64_t offset, std::span<std::byte> target) {
  if (slots_.empty()) return 0;
  const std::uint32_t index = slot_of(offset / page_size);
  if (index == none) return 0;
  Slot& slot = slots_[index];
  slot.is_used = true;
  const auto skipped = static_cast<std::size_t>(offset % page_size);
  if (slot.size <= skipped) return 0;
  const std::byte* held = room(index) + skipped;
  const std::size_t n = std::min(target.size(), slot.size - skipped);
  std::memcpy(target.data(), held, n);
  // In a sweep the block to the right will ask for what follows.
  prefetch(held + n, std::min(n, slot.size - skipped - n));
  count(index, n);
  return n;
}

void PageCache::count(std::uint32_t index, std::size_t bytes) {
  Slot& slot = slots_[index];
  slot.unread -= std::min(slot.unread, bytes);
  if (slot.unread > negligible || slot.is_listed) return;
  slot.is_listed = true;
  spent_.push_back(index);  // there is room for every slot
}

// The memory is one piece that the system backs as it is written to, so a cache that is never
// filled costs next to nothing.
bool PageCache::allocate() try {
  constexpr std::size_t alignment = 4096;
  memory_.reset(static_cast<std::byte*>(std::aligned_alloc(alignment, most_pages_ * page_bytes)));
  if (memory_ == nullptr) return false;
  heads_.assign(std::bit_ceil(2 * most_pages_), none);
  spent_.reserve(most_pages_);
  slots_.resize(most_pages_);
  return true;
} catch (const std::bad_alloc&) {
  memory_.reset();
  return false;
}

void PageCache::unlink(std::uint32_t index) {
  std::uint32_t* link = &heads_[bucket(slots_[index].page)];
  while (*link != index) link = &slots_[*link].next;
  *link = slots_[index].next;
}

std::uint32_t PageCache::find_room() {
  while (!spent_.empty()) {
    const std::uint32_t index = spent_.back();
    spent_.pop_back();
    slots_[index].is_listed = false;
    if (slots_[index].unread <= negligible) return index;  // and was not filled anew
  }
  const auto count = static_cast<std::uint32_t>(slots_.size());
  if (in_use_ < count) return in_use_++;
  for (;; sweep_ = (sweep_ + 1) % count) {
    if (!std::exchange(slots_[sweep_].is_used, false)) return sweep_;
  }
}

std::byte* PageCache::place(std::int64_t offset) {
  if (most_pages_ == 0) return nullptr;
  if (slots_.empty() && !allocate()) {
    most_pages_ = 0;  // not asked for again
    return nullptr;
  }
  const std::int64_t page = offset / page_size;
  last_ = slot_of(page);
  if (last_ == none) {
    last_ = find_room();
    Slot& slot = slots_[last_];
    if (slot.page >= 0) unlink(last_);
    slot.page = page;
    slot.next = heads_[bucket(page)];
    heads_[bucket(page)] = last_;
  }
  set_size(0);
  return room(last_);
}

void PageCache::set_size(std::size_t bytes) {
  slots_[last_].size = bytes;
  slots_[last_].unread = bytes;
}

void PageCache::forget() {
  std::fill(slots_.begin(), slots_.end(), Slot());
  std::fill(heads_.begin(), heads_.end(), none);
  spent_.clear();
  in_use_ = 0;
}

}  // namespace gridkit
