#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <span>
#include <vector>

namespace gridkit {

// Pages of one file in memory, of a bounded number. It knows nothing of the file: its owner fills
// the pages. A page stays until it is forgotten or its room is needed. Room is taken first from
// pages that were handed out whole, the latest one first since it lies in the processor's
// cache, then from what was never in use, then from pages that were not asked for lately.
class PageCache {
 public:
  static constexpr std::size_t page_bytes = std::size_t{64} * 1024;

  // Keeps at most `bytes`, in whole pages. No memory is taken before it is needed.
  explicit PageCache(std::size_t bytes) : most_pages_(bytes / page_bytes) {}

  // Copies what is held from a place of the file (not negative) on, up to the end of its page;
  // gives the number of bytes, 0 when that place is not held.
  std::size_t read(std::int64_t offset, std::span<std::byte> target);

  // Room for the page that holds a place of the file, in the stead of what was held of it; null
  // when there is none. The page is empty until set_size() tells what came.
  std::byte* place(std::int64_t offset);

  // How many bytes of the page placed last are valid.
  void set_size(std::size_t bytes);

  // Holds nothing from now on.
  void forget();

 private:
  static constexpr std::uint32_t none = UINT32_MAX;
  // Bytes that may stay unread in a spent page: the heads between the lines of an image.
  static constexpr std::size_t negligible = page_bytes / 256;
  static constexpr auto page_size = static_cast<std::int64_t>(page_bytes);

  struct Slot {
    std::int64_t page = -1;
    std::size_t size = 0;
    std::size_t unread = 0;     // bytes to be handed out until the page counts as spent
    std::uint32_t next = none;  // of the slots in the same bucket
    bool is_used = false;       // asked for since the search for room came by
    bool is_listed = false;     // among the spent ones
  };
  struct Release {
    void operator()(std::byte* block) const { std::free(block); }
  };

  std::size_t bucket(std::int64_t page) const {
    return static_cast<std::size_t>(page) & (heads_.size() - 1);
  }
  std::byte* room(std::uint32_t index) const { return memory_.get() + index * page_bytes; }
  std::uint32_t slot_of(std::int64_t page) const;
  void count(std::uint32_t index, std::size_t bytes);
  bool allocate();
  std::uint32_t find_room();
  void unlink(std::uint32_t index);

  std::size_t most_pages_;
  std::unique_ptr<std::byte[], Release> memory_;
  std::vector<Slot> slots_;           // empty until memory was had
  std::vector<std::uint32_t> heads_;  // by bucket: the first slot of a chain
  std::vector<std::uint32_t> spent_;
  std::uint32_t in_use_ = 0;  // slots after these were never in use
  std::uint32_t sweep_ = 0;
  std::uint32_t last_ = 0;
};

}  // namespace gridkit
