#include "gridkit/layers/gdal_support.h"

#include <cerrno>
#include <initializer_list>
#include <mutex>
#include <new>
#include <system_error>

#include <cpl_error.h>
#include <gdal.h>
#include <gdal_frmts.h>

#include "gridkit/os_error.h"

namespace gridkit {

void register_geotiff() {
  static std::once_flag once;
  std::call_once(once, GDALRegister_GTiff);
}

void register_cog() {
  static std::once_flag once;
  register_geotiff();
  std::call_once(once, GDALRegister_COG);
}

// Called by the library, so nothing may be thrown.
void GdalMessages::collect(int kind, int, const char* message) {
  auto* self = static_cast<GdalMessages*>(CPLGetErrorHandlerUserData());
  if (kind < CE_Failure || self->any()) return;
  self->os_error_ = errno;
  try {
    self->first_ = message;
  } catch (const std::bad_alloc&) {
    self->first_ = "out of memory";  // short enough to need none
  }
}

GdalMessages::GdalMessages() {
  errno = 0;
  CPLPushErrorHandlerEx(
      [](CPLErr kind, CPLErrorNum number, const char* message) { collect(kind, number, message); },
      this);
}

GdalMessages::~GdalMessages() {
  CPLPopErrorHandler();
}

std::string GdalMessages::first_or(const char* otherwise) const {
  return first_.empty() ? otherwise : first_;
}

std::string GdalMessages::reason() const {
  for (const int error : {ENOSPC, EDQUOT, EFBIG, EROFS}) {
    const bool is_told = first_.find(std::generic_category().message(error)) != std::string::npos;
    if (is_told || os_error_ == error) return os_error_in_words(error);
  }
  return first_or("unknown reason");
}

}  // namespace gridkit
