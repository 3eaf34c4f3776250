#pragma once

#include <stdint.h>

#include "gridkit/export.h"
#include "gridkit/layer.h"
#include "gridkit/report.h"

#ifdef __cplusplus
extern "C" {
#endif

// Where layers lie on a map, told by the GeoTIFF file itself: files that lie beside it have no say.
// Every operation answers a null layer or projection with a report.

// The map information of a layer. `upperLeft` is the outer corner of the first pixel, x then y,
// whether the file's pixels are areas or points. Numbers are in `units`; of a geographic image x is
// the longitude.
//
// `pixelSize` is a width and a height: how far x grows from a column to the next, and how far y
// falls from a line to the next. So both are positive for an image with north up and east to the
// right, the height is negative for one with south up and the width for one with west to the right.
// A map's y grows upwards while lines are counted downwards, so a reader subtracts the height:
// column c and line r, counted at pixel corners, lie at
//
//   x = upperLeft[0] + c * pixelSize[0]
//   y = upperLeft[1] - r * pixelSize[1]
//
// A plug-in's LayerMapInfoRead answers the other sign: the step of y from a line to the next, to be
// added, which is negative for an image with north up. A plug-in that passes this record on turns
// the height's sign, as gridkit::MapInfo (gridkit/map_data.h) and `gridkit info` have it.
typedef struct gkj_MapInfo {
  char* projectionName;  // "UTM", "Polar Stereographic" (UPS too), "Geographic", or the
                         // projection's own name in the file
  double* upperLeft;
  double* pixelSize;
  char* units;  // "metre", "degree" of a geographic image, or the unit's own name
} gkj_MapInfo;

// A new record; null and a report for a layer without a map projection or a place on it, or whose
// grid is rotated. `reserved` is 0.
GRIDKIT_API gkj_MapInfo* gkl_MapInfoRead(gkl_Layer* layer, int32_t reserved, gke_Report** err);

// Frees the record and clears the variable; a null address or record is nothing.
GRIDKIT_API void gkj_MapInfoFree(gkj_MapInfo** info);

// A map projection.
typedef struct gkj_Projection gkj_Projection;

// A value of a projection's MIF form: pointer-sized, see gkj_ProjectionConvertToMIF.
typedef void* gkj_MifValue;

// The layer's projection as a new record in *projection; null there and a report when it has none.
// A projection without a MIF form gives a record all the same: its mark is 1, and converting it
// reports why. A height system in the file is no part of the projection.
GRIDKIT_API void gkl_LayerMapProjectionRead(gkl_Layer* layer, gkj_Projection** projection,
                                            gke_Report** err);

// Frees a projection and clears the variable; a null address or projection is nothing.
GRIDKIT_API void gkj_ProjectionFree(gkj_Projection** projection);

// A projection's parameters, of the type "Gkj_ProParameters". They live as long as the projection.
typedef struct gkj_ProSupport {
  // 0 when GeoTIFF keys keep the projection without loss; 1 when it is none of UTM and Polar
  // Stereographic in metres, or when a parameter is one that the keys have no place for: a datum
  // without a code of EPSG's, or a scale factor or origin other than UTM's in a UTM zone.
  int32_t mark;
} gkj_ProSupport;
typedef struct Gkj_ProParameters {
  gkj_ProSupport* support;
} Gkj_ProParameters;
GRIDKIT_API const Gkj_ProParameters* gkj_MapProjectionCSRGet(const gkj_Projection* projection,
                                                             const char* typeName);

// The nine MIF values of a projection and back: the name and eight values, each null or the address
// of a zero-ended text. From a projection all are heap texts of the caller's (gkm_HeapFree); on
// failure all are null. Numbers are written so that they read back bit for bit, angles in degrees,
// lengths in metres; those of a file come with the 15 significant digits that GDAL tells. To a
// projection the result is null and a report, which names the value, for one that is missing,
// superfluous, longer than 200 characters, no number or out of its range (longitudes to 360
// degrees, latitudes of true scale 0.0001 to 89.9999 with the pole's sign, scale factors 0.01 to
// 100, false eastings and northings to 1e9 metres), or for a datum that the PROJ database does not
// know by this very name.
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
