#include "support/counted_new.h"

#include <cstddef>
#include <cstdlib>
#include <new>

namespace {

constinit CountedNew state{nullptr, 0, 0, 0};

// Stands before each block, and keeps it aligned.
struct alignas(std::max_align_t) Head {
  bool counted;
};

void* allocate(std::size_t size, const void* caller, bool may_throw) noexcept {
  const bool counted = state.counts != nullptr && state.counts(caller, may_throw);
  if (counted && ++state.calls == state.fail_at) return nullptr;
  auto* head = static_cast<Head*>(std::malloc(sizeof(Head) + size));
  if (head == nullptr) return nullptr;
  head->counted = counted;
  state.live += counted ? 1 : 0;
  return head + 1;
}

}  // namespace

CountedNew& counted_new() {
  return state;
}

[[gnu::noinline]] void* operator new(std::size_t size) {
  void* block = allocate(size, __builtin_return_address(0), true);
  if (block == nullptr) throw std::bad_alloc();
  return block;
}
[[gnu::noinline]] void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return allocate(size, __builtin_return_address(0), false);
}
[[gnu::noinline]] void operator delete(void* block) noexcept {
  if (block == nullptr) return;
  Head* head = static_cast<Head*>(block) - 1;
  state.live -= head->counted ? 1 : 0;
  std::free(head);
}
[[gnu::noinline]] void operator delete(void* block, std::size_t) noexcept {
  operator delete(block);
}
