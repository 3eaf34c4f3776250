#include "gridkit/gdal_support.h"

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

}  // namespace

void register_geotiff() {
  static std::once_flag once;
  std::call_once(once, GDALRegister_GTiff);
}

void register_cog() {
  static std::once_flag once;
  register_geotiff();
  std::call_once(once, GDALRegister_COG);
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
