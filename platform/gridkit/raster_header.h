#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "gridkit/error.h"
#include "gridkit/export.h"
#include "gridkit/map_data.h"

namespace gridkit {

enum class SampleKind { unsigned_integer, signed_integer, floating, complex };

// What a GeoTIFF file says of itself, without a look at its pixels. Files beside it have no say.
struct RasterHeader {
  std::int32_t width = 0;
  std::int32_t height = 0;
  std::int32_t bands = 0;
  SampleKind kind = SampleKind::unsigned_integer;  // of the first band, as is sample_bits
  int sample_bits = 0;
  // Where the first band's stored pixels end in the file, bytes from its start; 0 when none are
  // stored, as in a sparse file. A file that ends earlier was cut off. In an image of more than
  // 65,536 strips or tiles an even choice of as many is looked at, the last one among them.
  std::uint64_t pixels_end = 0;
  // Where the image lies on a map, and that map's projection in its MIF form; without the first,
  // `why_no_map` tells the reason.
  std::optional<MapInfo> map;
  std::optional<MapProjection> projection;
  std::string why_no_map;
};

// Throws Error when the file is no readable GeoTIFF.
GRIDKIT_API RasterHeader read_raster_header(const std::string& path);

}  // namespace gridkit
