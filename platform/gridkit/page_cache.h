#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <span>
#include <vector>

namespace gridkit {

// Pages of one file in memory, of a bounded number. It knows nothing of the file: its owner fills
// the pages. A page stays until it is forgotten or its room is needed; the room of pages that were
// not asked for lately is taken first (one mark a page, swept round in a circle).
class PageCache {
 public:
  static constexpr std::size_t page_bytes = 64 * 1024;

  // Keeps at most `bytes`, in whole pages. No memory is taken before it is needed.
  explicit PageCache(std::size_t bytes) : most_pages_(bytes / page_bytes) {}

  // The bytes that are held from a place of the file (not negative) to the end of its page; none
  // when the page is not held or ends before that place. Valid until the next call of place().
  std::span<const std::byte> find(std::int64_t offset) {
    if (slots_.empty()) return {};
    const std::uint32_t index = slot_of(offset / page_size);
    if (index == none) return {};
    Slot& slot = slots_[index];
    slot.is_used = true;
    const auto skipped = static_cast<std::size_t>(offset % page_size);
    if (slot.size <= skipped) return {};
    return {room(index) + skipped, slot.size - skipped};
  }

  // Room for the page that holds a place of the file, in the stead of what was held of it; null
  // when there is none. The page counts as held, and empty, until set_size() tells what came.
  std::byte* place(std::int64_t offset);

  // How many bytes of the page placed last are valid.
  void set_size(std::size_t bytes) { slots_[last_].size = bytes; }

  // Holds nothing from now on.
  void forget();

 private:
  static constexpr std::uint32_t none = UINT32_MAX;
  static constexpr auto page_size = static_cast<std::int64_t>(page_bytes);

  struct Slot {
    std::int64_t page = -1;
    std::size_t size = 0;
    std::uint32_t next = none;  // of the slots in the same bucket
    bool is_used = false;       // asked for since the sweep came by
  };
  struct Release {
    void operator()(std::byte* block) const { std::free(block); }
  };

  std::size_t bucket(std::int64_t page) const {
    return static_cast<std::size_t>(page) & (heads_.size() - 1);
  }
  // The slot of a held page, or `none`.
  std::uint32_t slot_of(std::int64_t page) const {
    std::uint32_t index = heads_[bucket(page)];
    while (index != none && slots_[index].page != page) index = slots_[index].next;
    return index;
  }
  std::byte* room(std::uint32_t index) const { return memory_.get() + index * page_bytes; }
  bool allocate();
  std::uint32_t take_slot();
  void unlink(std::uint32_t index);

  std::size_t most_pages_;
  std::unique_ptr<std::byte[], Release> memory_;
  std::vector<Slot> slots_;           // empty until memory was had
  std::vector<std::uint32_t> heads_;  // by bucket: the first slot of a chain
  std::uint32_t sweep_ = 0;
  std::uint32_t last_ = 0;
};

}  // namespace gridkit
