#include "gridkit/maps/gdal_reference.h"

#include "gridkit/layers/gdal_support.h"
#include "gridkit/maps/projection_form.h"
#include "gridkit/maps/projection_mif.h"

namespace gridkit {

OGRSpatialReference reference_of(const Georeference& georeference) {
  const GdalMessages messages;
  if (georeference.projection) {
    OGRSpatialReference reference = reference_of(form_of(*georeference.projection));
    reference.AutoIdentifyEPSG();  // a name for other tools; without a code it stays as it is
    return reference;
  }
  OGRSpatialReference reference;
  if (reference.importFromEPSG(georeference.epsg) != OGRERR_NONE) {
    throw Error("no coordinate reference system of the code " + std::to_string(georeference.epsg) +
                ": " + messages.first_or("none is known"));
  }
  return reference;
}

}  // namespace gridkit
