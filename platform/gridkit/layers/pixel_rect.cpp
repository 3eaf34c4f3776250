#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>

#include "gridkit/layer.h"
#include "gridkit/memory.h"
#include "gridkit/services/fail.h"

namespace {

std::size_t size_of_pixel(int32_t pixelType) {
  switch (pixelType) {
    case gkl_PixelU8:
      return 1;
    case gkl_PixelU16:
    case gkl_PixelS16:
      return 2;
    case gkl_PixelF32:
      return 4;
    case gkl_PixelF64:
      return 8;
    default:
      return 0;
  }
}

}  // namespace

gkl_PixelRect* gkl_PixelRectCreate(int32_t width, int32_t height, int32_t pixelType,
                                   gke_Report** err) {
  constexpr const char* word = "gkl_PixelRectCreate";
  const std::size_t pixel = size_of_pixel(pixelType);
  if (width < 1 || height < 1 || pixel == 0) {
    gridkit::fail(err, word, {"a rectangle needs a positive size and a known pixel type"});
    return nullptr;
  }
  const std::size_t row = static_cast<std::size_t>(width) * pixel;
  std::size_t bytes = 0;
  if (__builtin_mul_overflow(row, static_cast<std::size_t>(height), &bytes)) {
    gridkit::fail(err, word, {"out of memory"});
    return nullptr;
  }
  std::unique_ptr<gkl_PixelRect> rect(new (std::nothrow) gkl_PixelRect);
  void* data = rect == nullptr ? nullptr : gkm_HeapMalloc(bytes);
  if (data == nullptr) {
    gridkit::fail(err, word, {"out of memory"});
    return nullptr;
  }
  *rect = {
      data,     static_cast<std::int64_t>(row), static_cast<std::int64_t>(pixel), width, height,
      pixelType};
  return rect.release();
}

void gkl_PixelRectDelete(gkl_PixelRect* rect, gke_Report** err) {
  if (rect == nullptr) {
    gridkit::fail(err, "gkl_PixelRectDelete", {"no rectangle"});
    return;
  }
  gkm_HeapFree(rect->data);
  delete rect;
}
