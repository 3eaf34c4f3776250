#include "gridkit/string_list.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>

#include "gridkit/memory.h"
#include "gridkit/services/fail.h"
#include "gridkit/text.h"

namespace {

// Arrays have room for the next power of two, so that a list grows in steps: one is full when its
// count is a power of two, or nothing.
bool is_full(const gks_StringList& list) {
  const auto count = static_cast<std::uint32_t>(list.count);
  return list.strings == nullptr || count == 0 || std::has_single_bit(count);
}

// Makes room for one more text; false without memory.
bool make_room(gks_StringList& list) {
  if (!is_full(list)) return true;
  const auto count = static_cast<std::size_t>(list.count);
  const std::size_t room = std::max<std::size_t>(2 * count, 1);
  auto** strings = static_cast<char**>(gkm_HeapMalloc(room * sizeof(char*)));
  if (strings == nullptr) return false;
  std::copy_n(list.strings, count, strings);
  gkm_HeapFree(list.strings);
  list.strings = strings;
  return true;
}

}  // namespace

gks_StringList* gks_StringListAppend(gks_StringList* list, const char* text, gke_Report** err) {
  if (text == nullptr || (list != nullptr && list->count == INT32_MAX)) {
    gridkit::fail(err, "gks_StringListAppend", {"nothing to append, or the list is full"});
    return list;
  }
  gks_StringList* target = list;
  if (target == nullptr) {
    target = static_cast<gks_StringList*>(gkm_HeapMalloc(sizeof(gks_StringList)));
    if (target != nullptr) *target = {0, nullptr};
  }
  char* copy = gks_Duplicate(text);
  if (copy == nullptr || target == nullptr || !make_room(*target)) {
    gkm_HeapFree(copy);
    if (list == nullptr) gkm_HeapFree(target);
    gridkit::fail(err, "gks_StringListAppend", {"out of memory"});
    return list;
  }
  target->strings[target->count] = copy;
  ++target->count;
  return target;
}

void gks_StringListDelete(gks_StringList* list, gke_Report**) {
  if (list == nullptr) return;
  for (int32_t i = 0; i < list->count && list->strings != nullptr; ++i) {
    gkm_HeapFree(list->strings[i]);
  }
  gkm_HeapFree(list->strings);
  gkm_HeapFree(list);
}
