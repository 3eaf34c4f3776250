#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>

#include "gridkit/error.h"
#include "gridkit/export.h"

namespace gridkit {

enum class SampleType { u8, u16, s16 };

// Where a map-projected image lies.
struct Georeference {
  int epsg = 0;  // code of the coordinate reference system
  // x = t[0] + column * t[1] + line * t[2], y = t[3] + column * t[4] + line * t[5], at pixel
  // corners
  std::array<double, 6> transform{};
};

struct RasterOptions {
  SampleType type = SampleType::u16;
  std::optional<Georeference> georeference;  // GeoTIFF only
  std::optional<double> no_data;             // GeoTIFF only
  bool sparse = false;  // GeoTIFF only: lines never written take no room and read as zeros
};

// Writes a single-band image line by line, never holding it whole. The file grows under a temporary
// name beside the target and gets its name in finish(); without that nothing is left.
class GRIDKIT_API RasterWriter {
 public:
  virtual ~RasterWriter() = default;

  // The next lines, [lines][width] samples of the raster's type in host order. Throws Error.
  virtual void write_lines(std::span<const std::byte> samples, std::int32_t lines) = 0;

  // Adds a text to the file's metadata, at any time before finish().
  virtual void add_metadata(const std::string& key, const std::string& value) = 0;

  // Completes the file and gives it its name. Throws Error.
  virtual void finish() = 0;
};

// GeoTIFF: uncompressed, one strip a line, BigTIFF where the size needs it. Throws Error.
GRIDKIT_API std::unique_ptr<RasterWriter> create_geotiff(const std::string& path,
                                                         std::int32_t width, std::int32_t height,
                                                         const RasterOptions& options);

// PNG: grey, 8 or 16 bits; signed samples are stored with 32768 added. Throws Error.
GRIDKIT_API std::unique_ptr<RasterWriter> create_png(const std::string& path, std::int32_t width,
                                                     std::int32_t height,
                                                     const RasterOptions& options);

}  // namespace gridkit
