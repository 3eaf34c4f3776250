#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "gridkit/raster_writer.h"
#include "tools/simulate/scene.h"
#include "tools/simulate/synthesis.h"

namespace simulate {

// GeoTIFF: 16-bit, one strip a line, uncompressed; georeferenced where the image lies on a map.
// Both replace a file that exists and throw std::exception when it cannot be written.
struct GeotiffLayout {
  std::int32_t lines = 0;
  std::int32_t samples = 0;
  std::optional<gridkit::Georeference> map{};
};

// Of a scene's map.
std::optional<gridkit::Georeference> georeference_of(const std::optional<MapGrid>& map);

void write_geotiff(const std::string& path, const GeotiffLayout& layout,
                   const Synthesis& synthesis);

// Such a file of the right size whose samples are zeros, taking hardly any room on disk.
void write_sparse_geotiff(const std::string& path, const GeotiffLayout& layout);

}  // namespace simulate
