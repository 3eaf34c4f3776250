#include "plugin/string_lists.h"

#include <cstddef>

#include "gridkit/memory.h"
#include "gridkit/text.h"

std::int32_t tsx_StringListCopy(char*** target, const char* const* source, std::int32_t count) {
  const std::size_t bytes = static_cast<std::size_t>(count) * sizeof(char*);
  *target = static_cast<char**>(gkm_HeapMalloc(bytes));
  std::int32_t reached = 0;
  for (; *target != nullptr && reached < count; ++reached) {
    (*target)[reached] = nullptr;
    if (source[reached] == nullptr) continue;
    (*target)[reached] = gks_Duplicate(source[reached]);
    if ((*target)[reached] == nullptr) break;
  }
  if (reached == count && *target != nullptr) return 0;
  tsx_StringListFree(target, reached);
  return -1;
}

void tsx_StringListFree(char*** target, std::int32_t count) {
  if (*target == nullptr) return;
  for (std::int32_t i = count - 1; i >= 0; --i) gkm_HeapFree((*target)[i]);
  gkm_HeapFree(*target);
  *target = nullptr;
}
