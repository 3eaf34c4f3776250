#pragma once

#include <stdint.h>

#include "gridkit/export.h"
#include "gridkit/report.h"

#ifdef __cplusplus
extern "C" {
#endif

// Files that any number of threads read at once. A handle has no place of its own: every read tells
// its own offset, and none waits for another. Only regular files open, and while a product is being
// opened only those in its folder, as with gkf_Open. The handle keeps the file that was opened,
// also when its name is taken away or given to another file; what is written into it is seen.
typedef struct gkf_SharedFile gkf_SharedFile;

// A file open for reading, the caller's to close; null and a report on failure.
GRIDKIT_API gkf_SharedFile* gkf_SharedOpen(const char* path, gke_Report** err);

// Closes; null is nothing. No read of the handle may be under way.
GRIDKIT_API void gkf_SharedClose(gkf_SharedFile* file);

// The file's size in bytes now; -1 and a report on failure.
GRIDKIT_API int64_t gkf_SharedSize(const gkf_SharedFile* file, gke_Report** err);

// Reads up to `bytes` bytes from the offset on. Gives the number of bytes read: fewer than asked
// for only where the file ends. -1 and a report for a null handle, a negative offset or count, and
// where the file cannot be read; the buffer may hold anything then.
GRIDKIT_API int64_t gkf_SharedRead(const gkf_SharedFile* file, void* buffer, int64_t bytes,
                                   int64_t offset, gke_Report** err);

#ifdef __cplusplus
}
#endif
