#include "gridkit/gdal_support.h"

#include <mutex>
#include <new>

#include <cpl_error.h>
#include <gdal.h>
#include <gdal_frmts.h>

namespace gridkit {

namespace {

// Called by the library, so nothing may be thrown.
void CPL_STDCALL collect(CPLErr kind, CPLErrorNum, const char* message) {
  auto* first = static_cast<std::string*>(CPLGetErrorHandlerUserData());
  if (kind < CE_Failure || !first->empty()) return;
  try {
    *first = message;
  } catch (const std::bad_alloc&) {
    *first = "out of memory";  // short enough to need none
  }
}

}  // namespace

void register_geotiff() {
  static std::once_flag once;
  std::call_once(once, GDALRegister_GTiff);
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
