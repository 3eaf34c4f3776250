#pragma once

#include <stdint.h>

#include "gridkit/export.h"
#include "gridkit/report.h"

#ifdef __cplusplus
extern "C" {
#endif

// A list of texts. The array and each text come from gkm_HeapMalloc, so an owner may take them away
// and clear both fields. Only the operations below may change the fields otherwise.
typedef struct gks_StringList {
  int32_t count;
  char** strings;
} gks_StringList;

// Appends a copy of `text`, creating the list when `list` is null, and gives the list back. Without
// memory the list is given back as it was (null stays null), with a report.
GRIDKIT_API gks_StringList* gks_StringListAppend(gks_StringList* list, const char* text,
                                                 gke_Report** err);

// Frees a list, its array and its texts; null and an emptied list are fine.
GRIDKIT_API void gks_StringListDelete(gks_StringList* list, gke_Report** err);

#ifdef __cplusplus
}
#endif
