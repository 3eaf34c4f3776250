#include "gridkit/layers/gdal_support.h"

#include <malloc.h>

#include <algorithm>
#include <cerrno>
#include <initializer_list>
#include <mutex>
#include <new>
#include <system_error>

#include <cpl_conv.h>
#include <cpl_error.h>
#include <gdal.h>
#include <gdal_frmts.h>

#include "gridkit/os_error.h"

namespace gridkit {

namespace {

// The library has and frees its tiles by the megabyte. The C library would hand such memory back to
// the system each time, and the next tiles would have to be had page by page; so some is kept.
void keep_freed_memory() {
#ifdef __GLIBC__
  constexpr int kept_bytes = 64 * 1024 * 1024;
  constexpr int largest_kept_block = 16 * 1024 * 1024;
  mallopt(M_TRIM_THRESHOLD, kept_bytes);
  mallopt(M_MMAP_THRESHOLD, largest_kept_block);
#endif
}

// The library would keep tiles up to a twentieth of the machine's memory.
void bound_tile_cache() {
  constexpr GIntBig most_bytes = GIntBig{128} * 1024 * 1024;
  const bool is_chosen = CPLGetConfigOption("GDAL_CACHEMAX", nullptr) != nullptr;
  if (!is_chosen) GDALSetCacheMax64(std::min(GDALGetCacheMax64(), most_bytes));
}

}  // namespace

void register_geotiff() {
  static std::once_flag once;
  std::call_once(once, [] {
    keep_freed_memory();
    bound_tile_cache();
    GDALRegister_GTiff();
  });
}

void register_cog() {
  static std::once_flag once;
  register_geotiff();
  std::call_once(once, GDALRegister_COG);
}

// Called by the library, so nothing may be thrown.
void gdal_messages::collect(int kind, int, const char* message) {
  auto* self = static_cast<gdal_messages*>(CPLGetErrorHandlerUserData());
  if (kind < CE_Failure || self->any()) return;
  self->os_error_ = errno;
  try {
    self->first_ = message;
  } catch (const std::bad_alloc&) {
    self->first_ = "out of memory";  // short enough to need none
  }
}

gdal_messages::gdal_messages() {
  errno = 0;
  CPLPushErrorHandlerEx(
      [](CPLErr kind, CPLErrorNum number, const char* message) { collect(kind, number, message); },
      this);
}

gdal_messages::~gdal_messages() {
  CPLPopErrorHandler();
}

std::string gdal_messages::first_or(const char* otherwise) const {
  return first_.empty() ? otherwise : first_;
}

std::string gdal_messages::reason() const {
  for (const int error : {ENOSPC, EDQUOT, EFBIG, EROFS}) {
    const bool is_told = first_.find(std::generic_category().message(error)) != std::string::npos;
    if (is_told || os_error_ == error) return os_error_in_words(error);
  }
  return first_or("unknown reason");
}

}  // namespace gridkit
