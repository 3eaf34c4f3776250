#pragma once

#include <stdint.h>

#include "gridkit/export.h"
#include "gridkit/layer.h"
#include "gridkit/report.h"

#ifdef __cplusplus
extern "C" {
#endif

// Where layers lie on a map. Every operation answers a null layer or projection with a report.

// The map information of a layer. `upperLeft` is the outer corner of the first pixel, x then y;
// `pixelSize` width then height, both positive for an image with north up.
typedef struct gkj_MapInfo {
  char* projectionName;  // "UTM", "Polar Stereographic", or the projection's own name in the file
  double* upperLeft;
  double* pixelSize;
  char* units;  // "metre"
} gkj_MapInfo;

// A new record; null and a report for a layer without a map projection, or whose grid is rotated.
// `reserved` is 0.
GRIDKIT_API gkj_MapInfo* gkl_MapInfoRead(gkl_Layer* layer, int32_t reserved, gke_Report** err);

// Frees the record and clears the variable; a null address or record is nothing.
GRIDKIT_API void gkj_MapInfoFree(gkj_MapInfo** info);

// A map projection.
typedef struct gkj_Projection gkj_Projection;

// A value of a projection's MIF form: pointer-sized, see gkj_ProjectionConvertToMIF.
typedef void* gkj_MifValue;

// The layer's projection as a new record in *projection; null there and a report when it has none
// that can be told.
GRIDKIT_API void gkl_LayerMapProjectionRead(gkl_Layer* layer, gkj_Projection** projection,
                                            gke_Report** err);

// Frees a projection and clears the variable; a null address or projection is nothing.
GRIDKIT_API void gkj_ProjectionFree(gkj_Projection** projection);

// A projection's parameters, of the type "Gkj_ProParameters". They live as long as the projection.
typedef struct gkj_ProSupport {
  // 0 when the nine MIF values say the whole projection, so that a raster format that stores them
  // stores it without loss; 1 when the projection is none of UTM and Polar Stereographic, or one of
  // their parameters is one that GeoTIFF keys cannot keep.
  int32_t mark;
} gkj_ProSupport;
typedef struct Gkj_ProParameters {
  gkj_ProSupport* support;
} Gkj_ProParameters;
GRIDKIT_API const Gkj_ProParameters* gkj_MapProjectionCSRGet(const gkj_Projection* projection,
                                                             const char* typeName);

// The nine MIF values of a projection and back: eight heap texts and the name, all the caller's
// (gkm_HeapFree). Numbers are written so that they read back bit for bit, angles in degrees,
// lengths in metres.
//
//   value   UTM                              Polar Stereographic
//   name    "UTM"                            "Polar Stereographic"
//   2       datum, such as "WGS 84"          the same
//   3       units, "metre"                   the same
//   4       zone, "1" to "60"                longitude straight up or down from the pole
//   5       "N" or "S"                       "N" or "S", the pole
//   6       scale factor, "0.9996"           latitude of true scale, or null where value 7 stands
//   7       null                             scale factor at the pole, or null where value 6 stands
//   8       false easting                    false easting
//   9       false northing                   false northing
GRIDKIT_API void gkj_ProjectionConvertToMIF(const gkj_Projection* projection, char** projectionName,
                                            gkj_MifValue* mifValue2, gkj_MifValue* mifValue3,
                                            gkj_MifValue* mifValue4, gkj_MifValue* mifValue5,
                                            gkj_MifValue* mifValue6, gkj_MifValue* mifValue7,
                                            gkj_MifValue* mifValue8, gkj_MifValue* mifValue9,
                                            gke_Report** err);
GRIDKIT_API gkj_Projection* gkj_ProjectionConvertFromMIF(
    const char* projectionName, gkj_MifValue mifValue2, gkj_MifValue mifValue3,
    gkj_MifValue mifValue4, gkj_MifValue mifValue5, gkj_MifValue mifValue6, gkj_MifValue mifValue7,
    gkj_MifValue mifValue8, gkj_MifValue mifValue9, gke_Report** err);

#ifdef __cplusplus
}
#endif
