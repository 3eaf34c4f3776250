#include "bridges/gdal/host.h"

#include <cpl_error.h>

namespace gridkit_gdal {

namespace {

CPLErrorNum number_of(int32_t code) {
  switch (code) {
    case gridkit_NotFound:
    case gridkit_NotRecognised:
    case gridkit_BadDescription:
    case gridkit_NoPlugin:
      return CPLE_OpenFailed;
    case gridkit_BadImage:
    case gridkit_CutShort:
    case gridkit_CannotRead:
      return CPLE_FileIO;
    case gridkit_NoMemory:
      return CPLE_OutOfMemory;
    case gridkit_NotThere:
      return CPLE_NotSupported;
    case gridkit_Cancelled:
      return CPLE_UserInterrupt;
    default:
      return CPLE_AppDefined;
  }
}

}  // namespace

gridkit_error** HostError::out() {
  gridkit_error_free(error_);
  error_ = nullptr;
  return &error_;
}

void HostError::report() const {
  CPLError(CE_Failure, number_of(code()), "%s", gridkit_error_message(error_));
}

Product open_product(const std::string& path, HostError& error) {
  gridkit_product* product = nullptr;
  if (gridkit_open(path.c_str(), nullptr, &product, error.out()) != gridkit_Done) return nullptr;
  return {product,
          [](const gridkit_product* open) { gridkit_close(const_cast<gridkit_product*>(open)); }};
}

}  // namespace gridkit_gdal
