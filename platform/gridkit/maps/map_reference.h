#pragma once

#include <string>

#include <ogr_spatialref.h>

#include "gridkit/layer.h"

namespace gridkit {

// The horizontal part of a layer's projected or geographic reference; a height system is no part of
// a projection. Throws Error when the image has none, or has one of another kind.
OGRSpatialReference map_reference(const gkl_Layer& layer);

// The name that the map information tells: "UTM", "Polar Stereographic", "Geographic", or the
// reference's own name.
std::string map_name(const OGRSpatialReference& reference);

}  // namespace gridkit
