#pragma once

#include <stdint.h>

#include "gridkit/export.h"

#ifdef __cplusplus
extern "C" {
#endif

// The registry of open products: a handle under a name. It keeps no count of holders: one entry
// ends with one removal, and whoever shares a handle counts its holders. Names are compared byte by
// byte. Safe to use from several threads; a callback runs outside the registry's lock.

// The handle registered under the name, null when there is none. `reserved` is 0. Of two entries of
// one name the newer answers.
GRIDKIT_API void* pool_FindFileHandleIfOpen(const char* name, int32_t reserved);

// Registers a handle with the function that ends it. 0, or -1 for a null argument or without
// memory.
typedef int32_t (*pool_ReleaseCallback)(void* handle);
GRIDKIT_API int32_t pool_AddFileHandleToList(void* handle, const char* name,
                                             pool_ReleaseCallback release);

// Takes the newest entry of that name out and then calls its callback with the handle. An unknown
// name is nothing. `reserved` is 0.
GRIDKIT_API void pool_RemoveFileHandleFromList(const char* name, int32_t reserved);

#ifdef __cplusplus
}
#endif
