#include "gridkit/gdal_support.h"

#include <malloc.h>

#include <mutex>

#include <cpl_error.h>
#include <gdal.h>
#include <gdal_frmts.h>

namespace gridkit {

namespace {

void CPL_STDCALL collect(CPLErr kind, CPLErrorNum, const char* message) {
  auto* first = static_cast<std::string*>(CPLGetErrorHandlerUserData());
  if (kind >= CE_Failure && first->empty()) *first = message;
}

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

}  // namespace

void register_geotiff() {
  static std::once_flag once;
  std::call_once(once, [] {
    keep_freed_memory();
    GDALRegister_GTiff();
  });
}

gdal_messages::gdal_messages() {
  CPLPushErrorHandlerEx(collect, &first_);
}

gdal_messages::~gdal_messages() {
  CPLPopErrorHandler();
}

std::string gdal_messages::first_or(const char* otherwise) const {
  return first_.empty() ? otherwise : first_;
}

}  // namespace gridkit
