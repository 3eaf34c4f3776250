#pragma once

#include "gridkit/map_data.h"
#include "gridkit/maps/projection_form.h"

namespace gridkit {

// The nine values of a form, as gkj_ProjectionConvertToMIF tells them.
MapProjection mif_of(const ProjectionForm& form);

// Reads nine values. Throws Error, which names the value, for any that is missing, superfluous,
// overlong, no number or out of its range. The datum is not looked up.
ProjectionForm form_of(const MapProjection& mif);

}  // namespace gridkit
