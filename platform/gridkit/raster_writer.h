#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "gridkit/error.h"
#include "gridkit/export.h"
#include "gridkit/map_data.h"
#include "gridkit/partial_file.h"

namespace gridkit {

// The complex ones are pairs, real part before imaginary part: of 16-bit integers, of 32-bit
// floats.
enum class SampleType { u8, u16, s16, f32, cs16, cf32 };

// Bytes of a sample.
GRIDKIT_API std::size_t sample_size(SampleType type);

// Where a map-projected image lies.
struct Georeference {
  int epsg = 0;  // code of the coordinate reference system; not looked at where `projection` is set
  // x = t[0] + column * t[1] + line * t[2], y = t[3] + column * t[4] + line * t[5], at pixel
  // corners
  std::array<double, 6> transform{};
  std::optional<MapProjection> projection{};
};

// A pixel whose place on Earth is known. Whole numbers are corners of pixels, as GeoTIFF counts:
// column 0.5 of line 0.5 is the centre of the first pixel.
struct ControlPoint {
  double column = 0;
  double line = 0;
  double longitude = 0;  // degrees, WGS 84
  double latitude = 0;
  double height = 0;  // metres above the ellipsoid
};

// How the strips or tiles of a GeoTIFF are stored. All of them give back the same samples.
enum class Compression { none, deflate, zstd, lzw };

// How an overview's pixel is made from those of the image.
enum class Overview { nearest, average, root_mean_square };

struct RasterOptions {
  SampleType type = SampleType::u16;
  Existing existing = Existing::replace;
  std::string shown_path{};                    // how messages call a GeoTIFF; empty: by its path
  std::string band_name{};                     // of GeoTIFF and ENVI files; empty: none
  std::string unit{};                          // the same
  std::optional<Georeference> georeference{};  // the same
  std::vector<ControlPoint> control_points{};  // GeoTIFF only; not beside a georeference
  // Rational polynomial coefficients by the names and in the texts of GDAL's metadata domain RPC;
  // whole lines and samples are centres of pixels. GeoTIFF only, where the format's own tag holds
  // them.
  std::vector<std::pair<std::string, std::string>> rational_model{};
  std::optional<double> no_data{};  // GeoTIFF and ENVI
  bool sparse = false;  // GeoTIFF only: lines never written take no room and read as zeros
  // GeoTIFF and Cloud-Optimised GeoTIFF; without it the first is not compressed, the second
  // deflated.
  std::optional<Compression> compression{};
  // How many threads compress side by side, at most 16; 0: one on each processor that may be used.
  int threads = 0;
  Overview overview = Overview::average;  // Cloud-Optimised GeoTIFF only
  // Cloud-Optimised GeoTIFF only: called in finish() with the share of its work that is done, 0
  // to 1; false gives the file up.
  std::function<bool(double)> progress{};
};

// Takes bytes that follow those before. What it throws ends the writing.
using ByteSink = std::function<void(std::span<const std::byte> bytes)>;

// Writes a single-band image line by line, never holding it whole. The file grows under a temporary
// name beside the target and gets its name in finish(); without that nothing is left.
class GRIDKIT_API RasterWriter {
 public:
  virtual ~RasterWriter() = default;

  // The next lines, [lines][width] samples of the raster's type in host order. Throws Error.
  virtual void write_lines(std::span<const std::byte> samples, std::int32_t lines) = 0;

  // Adds a text to the file's metadata, at any time before finish().
  virtual void add_metadata(const std::string& key, const std::string& value) = 0;

  // States the value of pixels without data, at any time before finish(). A PNG has no place for
  // it.
  virtual void set_no_data(double value) = 0;

  // Completes the file and gives it its name. Throws Error.
  virtual void finish() = 0;
};

// GeoTIFF: one strip a line where it is not compressed, else strips of some hundred KiB; BigTIFF
// where the size needs it, and where it may need it when that is not known beforehand. Throws
// Error.
GRIDKIT_API std::unique_ptr<RasterWriter> create_geotiff(const std::string& path,
                                                         std::int32_t width, std::int32_t height,
                                                         const RasterOptions& options);

// Cloud-Optimised GeoTIFF: tiles of 512 x 512, compressed, with overviews. It is made in finish()
// from an uncompressed GeoTIFF that stands beside it until then. Throws Error.
GRIDKIT_API std::unique_ptr<RasterWriter> create_cog(const std::string& path, std::int32_t width,
                                                     std::int32_t height,
                                                     const RasterOptions& options);

// PNG: grey, 8 or 16 bits, at most 1,000,000 columns and lines; signed samples are stored with
// 32768 added. Throws Error, also for floating-point and complex samples.
GRIDKIT_API std::unique_ptr<RasterWriter> create_png(const std::string& path, std::int32_t width,
                                                     std::int32_t height,
                                                     const RasterOptions& options);

// The same pictures, byte after byte into a sink that finish() does not end; messages call them by
// `name`. Of the options none is about files. Throws Error, and what the sink throws.
GRIDKIT_API std::unique_ptr<RasterWriter> stream_png(ByteSink sink, const std::string& name,
                                                     std::int32_t width, std::int32_t height,
                                                     const RasterOptions& options);

// The samples as they are, in host order, and their ENVI header in a text file PATH.hdr. A header
// that has to give way is gone before the new samples get their name, and the new one comes last:
// samples never stand beside the header of others. ENVI knows no complex integers: those are stored
// as complex floats of the same values. Throws Error.
GRIDKIT_API std::unique_ptr<RasterWriter> create_envi(const std::string& path, std::int32_t width,
                                                      std::int32_t height,
                                                      const RasterOptions& options);

// The samples of such a file alone, into a sink as above; no metadata go with them.
GRIDKIT_API std::unique_ptr<RasterWriter> stream_envi(ByteSink sink, const std::string& name,
                                                      std::int32_t width, std::int32_t height,
                                                      const RasterOptions& options);

}  // namespace gridkit
