#pragma once

#include <string>

#include "gridkit/export.h"

namespace gridkit {

// The version of this library and of the programs and the plug-in built with it, such as "0.1.0".
GRIDKIT_API std::string version();

// Versions of the libraries behind it that run, whichever ones it was built with, such as "3.6.2".
GRIDKIT_API std::string gdal_version();
GRIDKIT_API std::string proj_version();

}  // namespace gridkit
