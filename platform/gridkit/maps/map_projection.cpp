#include "gridkit/map_projection.h"

#include <array>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <string_view>

#include "gridkit/error.h"
#include "gridkit/layers/gdal_support.h"
#include "gridkit/maps/map_reference.h"
#include "gridkit/maps/projection_form.h"
#include "gridkit/maps/projection_mif.h"
#include "gridkit/memory.h"
#include "gridkit/services/fail.h"
#include "gridkit/text.h"

// Either the nine values or why there are none.
struct gkj_Projection {
  std::optional<gridkit::MapProjection> mif;
  std::string why_none;
  gkj_ProSupport support{1};
  Gkj_ProParameters parameters{&support};
};

namespace gridkit {

namespace {

// GeoTIFF keys name a datum by its EPSG code, a UTM zone by number and hemisphere alone.
bool geotiff_keeps(const ProjectionForm& form) {
  const OGRSpatialReference datum = datum_of(form.datum);
  const char* authority = datum.GetAuthorityName(nullptr);
  return has_its_own_constants(form) && authority != nullptr &&
         std::string_view(authority) == "EPSG";
}

// The nine values of a reference. Throws Error when they would say less than it does.
MapProjection whole_mif_of(const OGRSpatialReference& reference) {
  const auto form = form_of(reference);
  if (!form) {
    throw Error("the projection \"" + map_name(reference) +
                "\" is none of UTM and Polar Stereographic in metres");
  }
  constexpr const char* axes_aside[] = {"IGNORE_DATA_AXIS_TO_SRS_AXIS_MAPPING=YES", nullptr};
  double shift[7] = {};
  const OGRSpatialReference again = reference_of(*form);
  if (reference.GetTOWGS84(shift, 7) == OGRERR_NONE || !reference.IsSame(&again, axes_aside)) {
    throw Error("the datum \"" + form->datum +
                "\" is not the one of this name in the PROJ database");
  }
  MapProjection mif = mif_of(*form);
  static_cast<void>(form_of(mif));
  return mif;
}

std::unique_ptr<gkj_Projection> projection_of(const OGRSpatialReference& reference) {
  const GdalMessages messages;
  auto projection = std::make_unique<gkj_Projection>();
  try {
    projection->mif = whole_mif_of(reference);
    projection->support.mark = geotiff_keeps(form_of(*projection->mif)) ? 0 : 1;
  } catch (const Error& error) {
    projection->why_none = error.what();
  }
  return projection;
}

std::unique_ptr<gkj_Projection> projection_of(const MapProjection& mif) {
  const GdalMessages messages;
  const ProjectionForm form = form_of(mif);
  auto projection = std::make_unique<gkj_Projection>();
  projection->mif = mif_of(form);
  projection->support.mark = geotiff_keeps(form) ? 0 : 1;
  return projection;
}

constexpr std::size_t value_count = 8;
using ValueAddresses = std::array<gkj_MifValue*, value_count>;

// Copies of all nine texts through the addresses. Throws std::bad_alloc and leaves nulls.
void hand_out(const MapProjection& mif, char** name, const ValueAddresses& values) {
  *name = gks_Duplicate(mif.name.c_str());
  bool complete = *name != nullptr;
  for (std::size_t i = 0; i < value_count; ++i) {
    if (!mif.values[i]) continue;
    *values[i] = gks_Duplicate(mif.values[i]->c_str());
    complete = complete && *values[i] != nullptr;
  }
  if (complete) return;
  gkm_HeapFree(*name);
  *name = nullptr;
  for (gkj_MifValue* value : values) {
    gkm_HeapFree(*value);
    *value = nullptr;
  }
  throw std::bad_alloc();
}

}  // namespace

}  // namespace gridkit

void gkl_LayerMapProjectionRead(gkl_Layer* layer, gkj_Projection** projection,
                                gke_Report** err) try {
  if (projection == nullptr) throw gridkit::Error("no address for the projection");
  *projection = nullptr;
  if (layer == nullptr) throw gridkit::Error("no layer");
  *projection = gridkit::projection_of(gridkit::map_reference(*layer)).release();
} catch (const gridkit::Error& error) {
  gridkit::fail(err, "gkl_LayerMapProjectionRead", {error.what()});
} catch (const std::bad_alloc&) {
  gridkit::fail(err, "gkl_LayerMapProjectionRead", {"out of memory"});
}

void gkj_ProjectionFree(gkj_Projection** projection) {
  if (projection == nullptr) return;
  delete *projection;
  *projection = nullptr;
}

const Gkj_ProParameters* gkj_MapProjectionCSRGet(const gkj_Projection* projection,
                                                 const char* typeName) {
  const bool known = gkt_Text_strcmp(typeName, "Gkj_ProParameters") == 0;
  return known && projection != nullptr ? &projection->parameters : nullptr;
}

void gkj_ProjectionConvertToMIF(const gkj_Projection* projection, char** projectionName,
                                gkj_MifValue* mifValue2, gkj_MifValue* mifValue3,
                                gkj_MifValue* mifValue4, gkj_MifValue* mifValue5,
                                gkj_MifValue* mifValue6, gkj_MifValue* mifValue7,
                                gkj_MifValue* mifValue8, gkj_MifValue* mifValue9,
                                gke_Report** err) try {
  const gridkit::ValueAddresses values{mifValue2, mifValue3, mifValue4, mifValue5,
                                       mifValue6, mifValue7, mifValue8, mifValue9};
  bool complete = projectionName != nullptr;
  for (const gkj_MifValue* value : values) complete = complete && value != nullptr;
  if (!complete) throw gridkit::Error("no address for one of the values");
  *projectionName = nullptr;
  for (gkj_MifValue* value : values) *value = nullptr;
  if (projection == nullptr) throw gridkit::Error("no projection");
  if (!projection->mif) throw gridkit::Error(projection->why_none);
  gridkit::hand_out(*projection->mif, projectionName, values);
} catch (const gridkit::Error& error) {
  gridkit::fail(err, "gkj_ProjectionConvertToMIF", {error.what()});
} catch (const std::bad_alloc&) {
  gridkit::fail(err, "gkj_ProjectionConvertToMIF", {"out of memory"});
}

gkj_Projection* gkj_ProjectionConvertFromMIF(const char* projectionName, gkj_MifValue mifValue2,
                                             gkj_MifValue mifValue3, gkj_MifValue mifValue4,
                                             gkj_MifValue mifValue5, gkj_MifValue mifValue6,
                                             gkj_MifValue mifValue7, gkj_MifValue mifValue8,
                                             gkj_MifValue mifValue9, gke_Report** err) try {
  if (projectionName == nullptr) throw gridkit::Error("the projection has no name");
  gridkit::MapProjection mif{projectionName, {}};
  const std::array<gkj_MifValue, gridkit::value_count> values{
      mifValue2, mifValue3, mifValue4, mifValue5, mifValue6, mifValue7, mifValue8, mifValue9};
  for (std::size_t i = 0; i < values.size(); ++i) {
    if (values[i] != nullptr) mif.values[i] = static_cast<const char*>(values[i]);
  }
  return gridkit::projection_of(mif).release();
} catch (const gridkit::Error& error) {
  gridkit::fail(err, "gkj_ProjectionConvertFromMIF", {error.what()});
  return nullptr;
} catch (const std::bad_alloc&) {
  gridkit::fail(err, "gkj_ProjectionConvertFromMIF", {"out of memory"});
  return nullptr;
}
