#include "handlepool/handlepool.h"

#include <algorithm>
#include <mutex>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace {

struct Entry {
  std::string name;
  void* handle;
  pool_ReleaseCallback release;
};

// The registry is the process's own by its nature.
struct Registry {
  std::mutex mutex;
  std::vector<Entry> entries;

  auto newest(std::string_view name) {
    return std::find_if(entries.rbegin(), entries.rend(),
                        [&](const Entry& e) { return e.name == name; });
  }
};

Registry& pool() {
  static Registry instance;
  return instance;
}

}  // namespace

void* pool_FindFileHandleIfOpen(const char* name, int32_t) {
  if (name == nullptr) return nullptr;
  const std::lock_guard lock(pool().mutex);
  const auto found = pool().newest(name);
  return found == pool().entries.rend() ? nullptr : found->handle;
}

int32_t pool_AddFileHandleToList(void* handle, const char* name, pool_ReleaseCallback release) try {
  if (handle == nullptr || name == nullptr || release == nullptr) return -1;
  const std::lock_guard lock(pool().mutex);
  pool().entries.push_back({name, handle, release});
  return 0;
} catch (const std::bad_alloc&) {
  return -1;
}

void pool_RemoveFileHandleFromList(const char* name, int32_t) {
  if (name == nullptr) return;
  std::optional<Entry> removed;
  {
    const std::lock_guard lock(pool().mutex);
    const auto found = pool().newest(name);
    if (found == pool().entries.rend()) return;
    removed = std::move(*found);
    pool().entries.erase(std::next(found).base());
  }
  removed->release(removed->handle);
}
