#include <array>
#include <cmath>
#include <new>
#include <string>

#include "gridkit/error.h"
#include "gridkit/layers/gdal_support.h"
#include "gridkit/layers/open_layer.h"
#include "gridkit/map_projection.h"
#include "gridkit/maps/map_reference.h"
#include "gridkit/memory.h"
#include "gridkit/services/fail.h"
#include "gridkit/text.h"

namespace gridkit {

namespace {

// Coefficients as GDAL tells them, at pixel corners: x = t[0] + column * t[1] + line * t[2],
// y = t[3] + column * t[4] + line * t[5].
std::array<double, 6> upright_grid(const gkl_Layer& layer) {
  const GdalMessages messages;
  std::array<double, 6> t{};
  if (GDALGetGeoTransform(layer.file.get(), t.data()) != CE_None) {
    throw Error("the image tells no place on its map");
  }
  for (const double coefficient : t) {
    if (!std::isfinite(coefficient)) throw Error("the image's place on its map is no number");
  }
  if (t[2] != 0 || t[4] != 0) throw Error("the image is rotated against its map");
  if (t[1] == 0 || t[5] == 0) throw Error("the image's pixels have no size on its map");
  return t;
}

std::string units_of(const OGRSpatialReference& reference) {
  const char* units = nullptr;
  if (reference.IsGeographic()) {
    reference.GetAngularUnits(&units);
  } else {
    reference.GetLinearUnits(&units);
  }
  return units == nullptr ? "unknown" : units;
}

double* new_pair(double first, double second) {
  const std::array pair{first, second};
  return static_cast<double*>(gkm_MemDup(pair.data(), sizeof pair));
}

gkj_MapInfo* new_record(const std::string& name, const std::array<double, 6>& t,
                        const std::string& units) {
  auto* info = static_cast<gkj_MapInfo*>(gkm_HeapMalloc(sizeof(gkj_MapInfo)));
  if (info == nullptr) throw std::bad_alloc();
  *info = {gks_Duplicate(name.c_str()), new_pair(t[0], t[3]), new_pair(t[1], -t[5]),
           gks_Duplicate(units.c_str())};
  if (info->projectionName == nullptr || info->upperLeft == nullptr || info->pixelSize == nullptr ||
      info->units == nullptr) {
    gkj_MapInfoFree(&info);
    throw std::bad_alloc();
  }
  return info;
}

}  // namespace

}  // namespace gridkit

gkj_MapInfo* gkl_MapInfoRead(gkl_Layer* layer, int32_t, gke_Report** err) try {
  if (layer == nullptr) throw gridkit::Error("no layer");
  const OGRSpatialReference reference = gridkit::map_reference(*layer);
  const auto grid = gridkit::upright_grid(*layer);
  return gridkit::new_record(gridkit::map_name(reference), grid, gridkit::units_of(reference));
} catch (const gridkit::Error& error) {
  gridkit::fail(err, "gkl_MapInfoRead", {error.what()});
  return nullptr;
} catch (const std::bad_alloc&) {
  gridkit::fail(err, "gkl_MapInfoRead", {"out of memory"});
  return nullptr;
}

void gkj_MapInfoFree(gkj_MapInfo** info) {
  if (info == nullptr || *info == nullptr) return;
  gkm_HeapFree((*info)->projectionName);
  gkm_HeapFree((*info)->upperLeft);
  gkm_HeapFree((*info)->pixelSize);
  gkm_HeapFree((*info)->units);
  gkm_HeapFree(*info);
  *info = nullptr;
}
