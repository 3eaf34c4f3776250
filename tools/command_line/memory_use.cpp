#include "tools/command_line/memory_use.h"

#include <malloc.h>
#include <stdlib.h>

void settle_memory_use() {
#ifdef __GLIBC__
  constexpr int kept_bytes = 64 * 1024 * 1024;
  // The most that the C library takes. Threads that compress tiles have and free 17 MB a row of
  // them.
  constexpr int largest_kept_block = 32 * 1024 * 1024;
  ::mallopt(M_TRIM_THRESHOLD, kept_bytes);
  ::mallopt(M_MMAP_THRESHOLD, largest_kept_block);
#endif
  constexpr const char* tile_cache_megabytes = "128";
  constexpr int keep_existing = 0;
  ::setenv("GDAL_CACHEMAX", tile_cache_megabytes, keep_existing);
}
