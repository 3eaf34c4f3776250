#pragma once

#include <gdal_priv.h>

#include "bridges/gdal/raster_source.h"

namespace gridkit_gdal {

// The only band of a dataset. Whole windows in its own type, or of complex integers as complex
// floats, go from the host straight into the caller's memory, whatever its strides, and so do
// windows that are thinned by whole steps. Everything else goes through GDAL's own blocks, of whole
// lines and about two megabytes.
class RasterBand final : public GDALRasterBand {
 public:
  // `has_no_data`: pixels of 0 are none.
  RasterBand(GDALDataset* dataset, RasterSource source, bool has_no_data);

  CPLErr IReadBlock(int column, int row, void* data) override;
  CPLErr IRasterIO(GDALRWFlag flag, int x, int y, int width, int height, void* data,
                   int buffer_width, int buffer_height, GDALDataType buffer_type,
                   GSpacing pixel_space, GSpacing line_space, GDALRasterIOExtraArg* extra) override;
  double GetNoDataValue(int* has_one) override;
  const char* GetUnitType() override;

 private:
  CPLErr read(const gridkit_window& window, const gridkit_target& target, int32_t form,
              const GDALRasterIOExtraArg* extra) const;

  RasterSource source_;
  bool has_no_data_;
};

}  // namespace gridkit_gdal
