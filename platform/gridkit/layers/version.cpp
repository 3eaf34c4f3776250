#include "gridkit/version.h"

#include <gdal.h>
#include <ogr_srs_api.h>

namespace gridkit {

std::string version() {
  return GRIDKIT_VERSION;
}

std::string gdal_version() {
  return GDALVersionInfo("RELEASE_NAME");
}

std::string proj_version() {
  int major = 0;
  int minor = 0;
  int patch = 0;
  OSRGetPROJVersion(&major, &minor, &patch);
  return std::to_string(major) + '.' + std::to_string(minor) + '.' + std::to_string(patch);
}

}  // namespace gridkit
