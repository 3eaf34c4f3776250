// GeoTIFF files through the host's layers: pixels, size, map information and projection, and their
// headers.

#include <cstdint>
#include <string>

#include "fuzz/bytes.h"
#include "fuzz/expect.h"
#include "fuzz/memory_file.h"
#include "gridkit/layer.h"
#include "gridkit/map_projection.h"
#include "gridkit/memory.h"
#include "gridkit/raster_header.h"

namespace {

void read_map(gkl_Layer* layer) {
  gkj_MapInfo* info = gkl_MapInfoRead(layer, 0, nullptr);
  gkj_MapInfoFree(&info);
  gkj_Projection* projection = nullptr;
  gkl_LayerMapProjectionRead(layer, &projection, nullptr);
  if (projection == nullptr) return;
  char* name = nullptr;
  gkj_MifValue v[8] = {};
  gkj_ProjectionConvertToMIF(projection, &name, &v[0], &v[1], &v[2], &v[3], &v[4], &v[5], &v[6],
                             &v[7], nullptr);
  gkj_Projection* again =
      gkj_ProjectionConvertFromMIF(name, v[0], v[1], v[2], v[3], v[4], v[5], v[6], v[7], nullptr);
  expect((name != nullptr) == (again != nullptr), "what has a MIF form comes back from it");
  gkj_ProjectionFree(&again);
  gkm_HeapFree(name);
  for (gkj_MifValue value : v) gkm_HeapFree(value);
  gkj_ProjectionFree(&projection);
}

void read_pixels(gkl_Layer* layer) {
  constexpr int size = 16;
  gkl_PixelRect* rect = gkl_PixelRectCreate(size, size, gkl_PixelF64, nullptr);
  for (const int place : {0, -8, 1000}) {
    gkl_LayerRead(layer, place, place, size, size, rect, nullptr);
  }
  gkl_PixelRectDelete(rect, nullptr);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const MemoryFile file(Bytes(data, size).rest());
  gki_Instance* token = gki_GetInit(nullptr);
  gks_StringList* names = gkl_LayerGetNames(file.path().c_str(), token, nullptr);
  if (names == nullptr) return 0;
  gkl_Layer* layer = gkl_LayerOpen(names->strings[0], token, nullptr, gkl_OptionReadOnly, 0);
  gks_StringListDelete(names, nullptr);
  if (layer == nullptr) return 0;
  int32_t width = 0;
  int32_t height = 0;
  gkl_LayerSize(layer, &width, &height);
  expect(width > 0 && height > 0, "an open layer has a size");
  read_pixels(layer);
  read_map(layer);
  gkl_LayerClose(layer, nullptr);
  const gridkit::RasterHeader header = gridkit::read_raster_header(file.path());
  expect(header.width == width && header.height == height, "the header tells the layer's size");
  return 0;
}
