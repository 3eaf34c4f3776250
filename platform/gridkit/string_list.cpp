#include "gridkit/string_list.h"

#include <algorithm>
#include <cstddef>

#include "gridkit/fail.h"
#include "gridkit/memory.h"
#include "gridkit/text.h"

namespace {

// Moves the texts into an array with room for one more; null without memory.
char** grown(const gks_StringList& list) {
  const auto count = static_cast<std::size_t>(list.count);
  auto** strings = static_cast<char**>(gkm_HeapMalloc((count + 1) * sizeof(char*)));
  if (strings != nullptr) std::copy_n(list.strings, count, strings);
  return strings;
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
  char** strings = target == nullptr ? nullptr : grown(*target);
  if (copy == nullptr || strings == nullptr) {
    gkm_HeapFree(copy);
    gkm_HeapFree(strings);
    if (list == nullptr) gkm_HeapFree(target);
    gridkit::fail(err, "gks_StringListAppend", {"out of memory"});
    return list;
  }
  gkm_HeapFree(target->strings);
  strings[target->count] = copy;
  target->strings = strings;
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
