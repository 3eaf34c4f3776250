#include "gridkit/map_wkt.h"

#include <memory>

#include <ogr_spatialref.h>

#include "gridkit/error.h"
#include "gridkit/layers/gdal_support.h"
#include "gridkit/maps/projection_form.h"
#include "gridkit/maps/projection_mif.h"

namespace gridkit {

std::string map_wkt(const MapProjection& projection) {
  const GdalMessages messages;
  OGRSpatialReference reference = reference_of(form_of(projection));
  reference.AutoIdentifyEPSG();  // without a code it stays as it is
  char* text = nullptr;
  const bool told = reference.exportToWkt(&text) == OGRERR_NONE && text != nullptr;
  const std::unique_ptr<char, void (*)(void*)> owned(text, VSIFree);
  if (!told) {
    throw Error("the projection " + projection.name +
                " has no well-known text: " + messages.first_or("none is known"));
  }
  return text;
}

}  // namespace gridkit
