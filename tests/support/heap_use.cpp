#include "tests/support/heap_use.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include <malloc.h>

namespace {

std::atomic<long> blocks_in_use = 0;
std::atomic<long> bytes_in_use = 0;

}  // namespace

#ifdef TSX_ADDRESS_SANITIZER

// The sanitizer's own interface; g++ comes without its header.
extern "C" {
std::size_t __sanitizer_get_allocated_size(const volatile void* block);
int __sanitizer_install_malloc_and_free_hooks(void (*given)(const volatile void*, std::size_t),
                                              void (*taken_back)(const volatile void*));
}

namespace {

void given(const volatile void* block, std::size_t size) {
  if (block == nullptr) return;
  blocks_in_use += 1;
  bytes_in_use += static_cast<long>(size);
}

void taken_back(const volatile void* block) {
  if (block == nullptr) return;
  blocks_in_use -= 1;
  bytes_in_use -= static_cast<long>(__sanitizer_get_allocated_size(block));
}

// What was given before is no part of a difference between two uses, as long as it stays.
[[maybe_unused]] const int installed = __sanitizer_install_malloc_and_free_hooks(given, taken_back);

}  // namespace

#else

// The C library's own names for its allocator.
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void __libc_free(void* block);
}

namespace {

// Stands before each block.
struct Head {
  void* start;  // as the C library gave it
  std::size_t size;
};
static_assert(sizeof(Head) == alignof(std::max_align_t));

Head* head_of(void* block) {
  return static_cast<Head*>(block) - 1;
}

// A block of `size` bytes `offset` after the start of what the C library gave.
void* given(void* start, std::size_t offset, std::size_t size) {
  if (start == nullptr) return nullptr;
  blocks_in_use.fetch_add(1, std::memory_order_relaxed);
  bytes_in_use.fetch_add(static_cast<long>(size), std::memory_order_relaxed);
  void* block = static_cast<char*>(start) + offset;
  *head_of(block) = {start, size};
  return block;
}

bool is_too_large(std::size_t size) {
  return size > PTRDIFF_MAX;
}

void* aligned(std::size_t alignment, std::size_t size) {
  if (is_too_large(size) || is_too_large(alignment)) return nullptr;
  const std::size_t step = std::max(alignment, sizeof(Head));
  void* start = __libc_malloc(size + 2 * step);
  const auto place = reinterpret_cast<std::uintptr_t>(start);
  return given(start, (place + 2 * step - 1) / step * step - place, size);
}

}  // namespace

// These stand before the C library's in every library of the process.
extern "C" {

void* malloc(std::size_t size) {
  if (is_too_large(size)) return nullptr;
  return given(__libc_malloc(size + sizeof(Head)), sizeof(Head), size);
}

void* calloc(std::size_t count, std::size_t size) {
  std::size_t bytes = 0;
  if (__builtin_mul_overflow(count, size, &bytes) || is_too_large(bytes)) return nullptr;
  return given(__libc_calloc(1, bytes + sizeof(Head)), sizeof(Head), bytes);
}

void free(void* block) {
  if (block == nullptr) return;
  const Head head = *head_of(block);
  blocks_in_use.fetch_sub(1, std::memory_order_relaxed);
  bytes_in_use.fetch_sub(static_cast<long>(head.size), std::memory_order_relaxed);
  __libc_free(head.start);
}

void* realloc(void* block, std::size_t size) {
  void* moved = malloc(size);
  if (block == nullptr || moved == nullptr) return moved;
  std::memcpy(moved, block, std::min(size, head_of(block)->size));
  free(block);
  return moved;
}

std::size_t malloc_usable_size(void* block) {
  return block == nullptr ? 0 : head_of(block)->size;
}

void* memalign(std::size_t alignment, std::size_t size) {
  return aligned(alignment, size);
}

void* aligned_alloc(std::size_t alignment, std::size_t size) {
  return aligned(alignment, size);
}

int posix_memalign(void** block, std::size_t alignment, std::size_t size) {
  *block = aligned(alignment, size);
  return *block == nullptr ? ENOMEM : 0;
}

}  // extern "C"

#endif

HeapUse heap_in_use() {
  return {blocks_in_use, bytes_in_use};
}
