#pragma once

#include <stddef.h>

#include "gridkit/export.h"

#ifdef __cplusplus
extern "C" {
#endif

// The host's heap. Whatever crosses between host and plug-in is allocated here and freed here.

// A block of `size` bytes, uncleared; null without memory. A size of 0 gives a block that can be
// freed.
GRIDKIT_API void* gkm_HeapMalloc(size_t size);

// Frees a block; null is nothing.
GRIDKIT_API void gkm_HeapFree(void* block);

// A heap copy of `size` bytes; null without memory or for a null source.
GRIDKIT_API void* gkm_MemDup(const void* source, size_t size);

// Copies `bytes` bytes between blocks that do not overlap.
GRIDKIT_API void gkm_MemCpy(void* target, const void* source, size_t bytes);

// Turns `count` big-endian items of `itemSize` bytes (1, 2, 4 or 8) into host order, in place.
// Other sizes change nothing.
GRIDKIT_API void gkm_MemSwab(void* buffer, size_t count, size_t itemSize);

#ifdef __cplusplus
}
#endif
