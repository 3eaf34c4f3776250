#include "gridkit/maps/map_reference.h"

#include "gridkit/error.h"
#include "gridkit/layers/gdal_support.h"
#include "gridkit/layers/open_layer.h"
#include "gridkit/maps/projection_form.h"

namespace gridkit {

OGRSpatialReference map_reference(const gkl_Layer& layer) {
  const GdalMessages messages;
  const auto stated = GDALGetSpatialRef(layer.file.get());
  if (stated == nullptr) throw Error("the image has no map projection");
  OGRSpatialReference reference(*OGRSpatialReference::FromHandle(stated));
  reference.StripVertical();
  if (!reference.IsProjected() && !reference.IsGeographic()) {
    // Without its database GDAL cannot tell what a code stands for.
    require_proj_database();
    throw Error("the image's coordinate system \"" + map_name(reference) +
                "\" is no map projection");
  }
  return reference;
}

std::string map_name(const OGRSpatialReference& reference) {
  if (reference.IsGeographic()) return "Geographic";
  if (const auto form = form_of(reference)) return name_of(form->method);
  const char* own = reference.GetName();
  return own == nullptr ? "unnamed" : own;
}

}  // namespace gridkit
