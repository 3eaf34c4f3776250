#pragma once

#include <cstdint>
#include <memory>

#include <gdal.h>

#include "gridkit/layer.h"

namespace gridkit {

struct dataset_closer {
  void operator()(void* dataset) const { GDALClose(dataset); }
};
using dataset = std::unique_ptr<void, dataset_closer>;

}  // namespace gridkit

// An open layer: one band of its file.
struct gkl_Layer {
  gridkit::dataset file;
  GDALRasterBandH band;
  int32_t width;
  int32_t height;
};
