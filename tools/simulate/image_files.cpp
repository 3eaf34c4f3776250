#include "tools/simulate/image_files.h"

#include <algorithm>
#include <cmath>
#include <span>
#include <vector>

namespace simulate {

std::optional<gridkit::Georeference> georeference_of(const std::optional<MapGrid>& map) {
  if (!map) return std::nullopt;
  return gridkit::Georeference{map->projection.epsg(),
                               {map->upper_left.easting - map->spacing / 2, map->spacing, 0,
                                map->upper_left.northing + map->spacing / 2, 0, -map->spacing}};
}

void write_geotiff(const std::string& path, const GeotiffLayout& layout,
                   const Synthesis& synthesis) {
  gridkit::RasterOptions options;
  options.georeference = layout.map;
  const auto writer = gridkit::create_geotiff(path, layout.samples, layout.lines, options);
  std::vector<float> amplitudes(static_cast<std::size_t>(layout.samples));
  std::vector<std::uint16_t> pixels(amplitudes.size());
  for (std::int32_t line = 0; line < layout.lines; ++line) {
    synthesis.detected_line(line, amplitudes);
    std::transform(amplitudes.begin(), amplitudes.end(), pixels.begin(), [](float value) {
      return static_cast<std::uint16_t>(std::lround(std::clamp(value, 0.0F, 65535.0F)));
    });
    writer->write_lines(std::as_bytes(std::span<const std::uint16_t>(pixels)), 1);
  }
  writer->finish();
}

void write_sparse_geotiff(const std::string& path, const GeotiffLayout& layout) {
  gridkit::RasterOptions options;
  options.georeference = layout.map;
  options.sparse = true;
  gridkit::create_geotiff(path, layout.samples, layout.lines, options)->finish();
}

}  // namespace simulate
