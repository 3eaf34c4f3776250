#pragma once

#include <cstdint>
#include <memory>

#include <gdal.h>

#include "gridkit/layer.h"

namespace gridkit {

struct DatasetCloser {
  void operator()(void* dataset) const { GDALClose(dataset); }
};
using Dataset = std::unique_ptr<void, DatasetCloser>;

}  // namespace gridkit

// An open layer: one band of its file.
struct gkl_Layer {
  gridkit::Dataset file;
  GDALRasterBandH band;
  int32_t width;
  int32_t height;
};
