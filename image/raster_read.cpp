#include <cstddef>
#include <cstdint>

#include "gridkit/layer.h"
#include "gridkit/memory.h"
#include "image/complex_reader.h"
#include "image/narrow_pixels.h"
#include "record/exports.h"
#include "record/report_frame.h"
#include "record/tsx_file.h"

namespace {

// A place in the image from a place in the block grid; block positions wrap rather than overflow.
std::int32_t first_of(std::int32_t size, std::int32_t position) {
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(size) *
                                   static_cast<std::uint32_t>(position));
}

constexpr std::int32_t success = 0;
constexpr std::int32_t failure = -1;

std::int32_t read_detected(const TsxLayer& layer, std::int32_t blockRow, std::int32_t blockColumn,
                           void* pixels, ReportFrame& frame) {
  const TsxFile& file = *layer.file;
  const std::int32_t w = file.blockWidth;
  const std::int32_t h = file.blockHeight;
  gkl_PixelRect* rect = gkl_PixelRectCreate(w, h, gkl_PixelF64, frame.slot());
  if (frame.pending() || rect == nullptr) {
    frame.report("gkl_PixelRectCreate failed");
    return failure;
  }
  const std::size_t bytes = 2 * static_cast<std::size_t>(w) * static_cast<std::size_t>(h);
  auto* staging = static_cast<std::uint16_t*>(gkm_HeapMalloc(bytes));
  if (staging == nullptr) {
    frame.report("No memory for block buffers");
    gkl_PixelRectDelete(rect, nullptr);
    return failure;
  }
  gkl_LayerRead(tiff_layer(file, layer.layerIndex), first_of(w, blockColumn), first_of(h, blockRow),
                w, h, rect, frame.slot());
  // Kept on purpose: the rectangle and the staging buffer stay allocated when the read fails.
  if (frame.failed("gkl_LayerRead failed")) return failure;
  tsx_NarrowPixels(*rect, w, h, staging);
  gkm_MemCpy(pixels, staging, bytes);
  gkm_HeapFree(staging);
  // A failure of this is printed and changes nothing: the pixels are there.
  gkl_PixelRectDelete(rect, frame.slot());
  return success;
}

}  // namespace

int32_t tsxLayerRasterRead(TsxLayer* layer, int32_t blockRow, int32_t blockColumn,
                           void** pixelData) {
  static const char* const function_word = "tsxLayerRasterRead";
  ReportFrame frame(function_word);
  const TsxFile& file = *layer->file;
  if (file.productVariant != variant_ssc) {
    return read_detected(*layer, blockRow, blockColumn, *pixelData, frame);
  }
  tsx_ReadLineComplex(layer, layer->layerIndex, first_of(file.blockWidth, blockColumn), pixelData,
                      first_of(file.blockHeight, blockRow), frame.slot());
  return frame.failed("tsx_ReadLineComplex failed") ? failure : success;
}
