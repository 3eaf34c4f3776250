#pragma once

#include <stdint.h>

#include "gridkit/export.h"
#include "gridkit/instance.h"
#include "gridkit/report.h"
#include "gridkit/string_list.h"

#ifdef __cplusplus
extern "C" {
#endif

// Layers of GeoTIFF files, read only. Every operation answers a null handle with a report.

// The types of pixels in a rectangle, all in host order.
enum { gkl_PixelU8 = 1, gkl_PixelU16 = 2, gkl_PixelS16 = 3, gkl_PixelF32 = 9, gkl_PixelF64 = 10 };

// A rectangle of pixels: the pixel of line r and column c stands at data + rowStride * r +
// columnStride * c bytes.
typedef struct gkl_PixelRect {
  void* data;
  int64_t rowStride;
  int64_t columnStride;
  int32_t width;
  int32_t height;
  int32_t pixelType;
} gkl_PixelRect;

// A new rectangle, whose pixels hold anything until a read fills them; null and a report for sizes
// below 1, an unknown type or without memory.
GRIDKIT_API gkl_PixelRect* gkl_PixelRectCreate(int32_t width, int32_t height, int32_t pixelType,
                                               gke_Report** err);

// Frees a rectangle; a null one is reported.
GRIDKIT_API void gkl_PixelRectDelete(gkl_PixelRect* rect, gke_Report** err);

// The names of the layers in a raster file, one a band, each of the form "N:PATH" with the band's
// number N from 1. The caller deletes the list. Null and a report when the file is no readable
// GeoTIFF.
GRIDKIT_API gks_StringList* gkl_LayerGetNames(const char* path, gki_Instance* token,
                                              gke_Report** err);

// Opens a layer by such a name. After the slot comes a list of option words ended by 0; word 25,
// read only, is what every layer is, and the others are refused.
enum { gkl_OptionReadOnly = 25 };
typedef struct gkl_Layer gkl_Layer;
GRIDKIT_API gkl_Layer* gkl_LayerOpen(const char* name, gki_Instance* token, gke_Report** err, ...);

// Closes a layer.
GRIDKIT_API void gkl_LayerClose(gkl_Layer* layer, gke_Report** err);

// Fills the rectangle's top left `width` by `height` pixels with the layer's pixels from the place
// (firstColumn, firstLine), converted to the rectangle's type. Where the window lies outside the
// image the pixels are 0; that is no failure.
GRIDKIT_API void gkl_LayerRead(gkl_Layer* layer, int32_t firstColumn, int32_t firstLine,
                               int32_t width, int32_t height, gkl_PixelRect* rect,
                               gke_Report** err);

// The size of the whole image; 0 by 0 for a null layer.
GRIDKIT_API void gkl_LayerSize(const gkl_Layer* layer, int32_t* width, int32_t* height);

#ifdef __cplusplus
}
#endif
