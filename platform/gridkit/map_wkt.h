#pragma once

#include <string>

#include "gridkit/export.h"
#include "gridkit/map_data.h"

namespace gridkit {

// A projection as well-known text (WKT 1, as GDAL writes it), axes in the order x, y, with the EPSG
// code where it has one. Throws Error for a projection that does not convert.
GRIDKIT_API std::string map_wkt(const MapProjection& projection);

}  // namespace gridkit
