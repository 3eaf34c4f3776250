#include "gridkit/raster_header.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <memory>

#include <gdal.h>

#include "gridkit/instance.h"
#include "gridkit/layers/gdal_support.h"
#include "gridkit/layers/open_layer.h"
#include "gridkit/map_projection.h"
#include "gridkit/services/host_texts.h"

namespace gridkit {

namespace {

constexpr std::int64_t most_blocks = 65536;

// A report's slot whose report ends with it.
class Slot {
 public:
  Slot() = default;
  Slot(const Slot&) = delete;
  Slot& operator=(const Slot&) = delete;
  ~Slot() { gke_DeleteErrorReportEx(&report_); }

  gke_Report** address() { return &report_; }
  std::string message() const { return report_ == nullptr ? "" : gke_ReportMessage(report_); }

 private:
  gke_Report* report_ = nullptr;
};

struct LayerCloser {
  void operator()(gkl_Layer* layer) const { gkl_LayerClose(layer, nullptr); }
};
using OpenLayer = std::unique_ptr<gkl_Layer, LayerCloser>;

OpenLayer open(const std::string& path) {
  Slot slot;
  const std::string name = "1:" + path;
  OpenLayer layer(gkl_LayerOpen(name.c_str(), gki_GetInit(nullptr), slot.address(), 0));
  if (layer == nullptr) throw Error(slot.message());
  return layer;
}

SampleKind kind_of(GDALDataType type) {
  if (GDALDataTypeIsComplex(type) != 0) return SampleKind::complex;
  if (GDALDataTypeIsFloating(type) != 0) return SampleKind::floating;
  return GDALDataTypeIsSigned(type) != 0 ? SampleKind::signed_integer
                                         : SampleKind::unsigned_integer;
}

std::uint64_t number_of(const char* text) {
  std::uint64_t value = 0;
  if (text != nullptr) std::from_chars(text, text + std::strlen(text), value);
  return value;
}

// The driver tells a depth that is none of its types' own in its metadata.
int bits_of(GDALRasterBandH band) {
  const auto own = number_of(GDALGetMetadataItem(band, "NBITS", "IMAGE_STRUCTURE"));
  if (own > 0 && own < 64) return static_cast<int>(own);
  return GDALGetDataTypeSizeBits(GDALGetRasterDataType(band));
}

std::uint64_t block_fact(GDALRasterBandH band, const char* fact, std::int64_t x, std::int64_t y) {
  const std::string name = fact + std::to_string(x) + '_' + std::to_string(y);
  return number_of(GDALGetMetadataItem(band, name.c_str(), "TIFF"));
}

std::uint64_t end_of_pixels(const gkl_Layer& layer) {
  int width = 0;
  int height = 0;
  GDALGetBlockSize(layer.band, &width, &height);
  if (width < 1 || height < 1) return 0;
  const std::int64_t across = (std::int64_t{layer.width} + width - 1) / width;
  const std::int64_t down = (std::int64_t{layer.height} + height - 1) / height;
  const std::int64_t step = across * down / most_blocks + 1;
  std::uint64_t end = 0;
  for (std::int64_t block = across * down - 1; block >= 0; block -= step) {
    const std::int64_t x = block % across;
    const std::int64_t y = block / across;
    const std::uint64_t offset = block_fact(layer.band, "BLOCK_OFFSET_", x, y);
    if (offset > 0) end = std::max(end, offset + block_fact(layer.band, "BLOCK_SIZE_", x, y));
  }
  return end;
}

void read_map(gkl_Layer* layer, RasterHeader& header) {
  Slot slot;
  gkj_MapInfo* info = gkl_MapInfoRead(layer, 0, slot.address());
  if (info == nullptr) {
    header.why_no_map = slot.message();
    return;
  }
  header.map = MapInfo{info->projectionName,
                       {info->upperLeft[0], info->upperLeft[1]},
                       {info->pixelSize[0], -info->pixelSize[1]},
                       info->units};
  gkj_MapInfoFree(&info);
}

void read_projection(gkl_Layer* layer, RasterHeader& header) {
  gkj_Projection* projection = nullptr;
  Slot first;
  gkl_LayerMapProjectionRead(layer, &projection, first.address());
  if (projection == nullptr) return;
  char* name = nullptr;
  gkj_MifValue v[8] = {};
  Slot second;
  gkj_ProjectionConvertToMIF(projection, &name, &v[0], &v[1], &v[2], &v[3], &v[4], &v[5], &v[6],
                             &v[7], second.address());
  gkj_ProjectionFree(&projection);
  if (name == nullptr) return;
  header.projection.emplace();
  header.projection->name = take_text(name);
  for (std::size_t i = 0; i < header.projection->values.size(); ++i) {
    if (v[i] != nullptr) header.projection->values[i] = take_text(static_cast<char*>(v[i]));
  }
}

}  // namespace

RasterHeader read_raster_header(const std::string& path) {
  const OpenLayer layer = open(path);
  const GdalMessages messages;
  RasterHeader header;
  header.width = layer->width;
  header.height = layer->height;
  header.bands = GDALGetRasterCount(layer->file.get());
  header.kind = kind_of(GDALGetRasterDataType(layer->band));
  header.sample_bits = bits_of(layer->band);
  header.pixels_end = end_of_pixels(*layer);
  read_map(layer.get(), header);
  read_projection(layer.get(), header);
  return header;
}

}  // namespace gridkit
