#pragma once

#include "gridkit/raster_writer.h"

namespace gridkit {

// GDAL's name of a compression.
const char* gdal_name(Compression compression);

// Whether compression is helped by differences of neighbours: of real numbers alone.
bool has_predictor(SampleType type);

}  // namespace gridkit
