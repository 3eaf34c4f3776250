#pragma once

#include <ogr_spatialref.h>

#include "gridkit/raster_writer.h"

namespace gridkit {

// The coordinate reference system of a georeference, with its EPSG code where one is known. Throws
// Error for an unknown code or a projection that does not convert.
OGRSpatialReference reference_of(const Georeference& georeference);

}  // namespace gridkit
