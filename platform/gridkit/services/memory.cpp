#include "gridkit/memory.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace {

template <class Item>
void reverse_items(void* buffer, std::size_t count) {
  auto* bytes = static_cast<unsigned char*>(buffer);
  for (std::size_t i = 0; i < count; ++i, bytes += sizeof(Item)) {
    std::reverse(bytes, bytes + sizeof(Item));
  }
}

}  // namespace

void* gkm_HeapMalloc(size_t size) {
  return std::malloc(size == 0 ? 1 : size);
}

void gkm_HeapFree(void* block) {
  std::free(block);
}

void* gkm_MemDup(const void* source, size_t size) {
  if (source == nullptr) return nullptr;
  void* copy = gkm_HeapMalloc(size);
  if (copy != nullptr) std::memcpy(copy, source, size);
  return copy;
}

void gkm_MemCpy(void* target, const void* source, size_t bytes) {
  if (bytes > 0) std::memcpy(target, source, bytes);
}

void gkm_MemSwab(void* buffer, size_t count, size_t itemSize) {
  if constexpr (std::endian::native == std::endian::big) return;
  switch (itemSize) {
    case 2:
      return reverse_items<std::uint16_t>(buffer, count);
    case 4:
      return reverse_items<std::uint32_t>(buffer, count);
    case 8:
      return reverse_items<std::uint64_t>(buffer, count);
    default:
      return;
  }
}
