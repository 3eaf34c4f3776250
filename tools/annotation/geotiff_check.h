#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "gridkit/raster_header.h"
#include "tools/annotation/annotated_images.h"
#include "tools/annotation/image_finding.h"

// Where a GeoTIFF's header disagrees with the annotation, or with the file's size: the image's
// size, its samples, and, where the annotation has a map's parameters, projection, zone,
// hemisphere, datum, spacing and the first and last pixel's place. `path` is for the findings only.
//
// The annotation does not say whether its corners are the corner pixels' centres or their outer
// corners: either passes, to a tenth of a pixel. Up to 0.6 pixels off is worth a look, more is
// serious. Spacings, which the annotation holds in single precision, agree to a millionth.
std::vector<ImageFinding> check_geotiff(const std::string& path,
                                        const gridkit::RasterHeader& header,
                                        std::uint64_t file_bytes, const AnnotatedImages& annotated);

// "GeoTIFF, 260 x 300 pixels of 16 bits, UTM zone 32 N, WGS84, pixels of 2.5 x 2.5 m", the map only
// where the annotation has one too.
std::string describe_geotiff(const gridkit::RasterHeader& header, const AnnotatedImages& annotated);
