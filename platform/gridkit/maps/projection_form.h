#pragma once

#include <optional>
#include <string>

#include <ogr_spatialref.h>

namespace gridkit {

// The parameters of the projections that have a MIF form, and their way to GDAL's spatial
// references and back. Angles are in degrees, lengths in metres. Numbers of a spatial reference
// come with the 15 significant digits that GDAL tells.
struct ProjectionForm {
  enum class Method { utm, polar_stereographic };

  Method method = Method::utm;
  std::string datum;        // name of the geographic coordinate system, such as "WGS 84"
  int zone = 0;             // UTM only
  bool south = false;       // the hemisphere of a UTM zone, the pole of a Polar Stereographic
  double longitude = 0;     // Polar Stereographic only: straight up or down from the pole
  double scale_factor = 1;  // on the central meridian or at the pole
  std::optional<double> true_scale_latitude;  // Polar Stereographic only; scale_factor is then 1
  double false_easting = 0;
  double false_northing = 0;
};

// "UTM" or "Polar Stereographic".
const char* name_of(ProjectionForm::Method method);

// A zone's parameters as UTM fixes them, whatever the datum.
ProjectionForm utm_form(int zone, bool south);

// Whether a UTM form has the scale factor and origin that UTM fixes; true for other forms.
bool has_its_own_constants(const ProjectionForm& form);

// The form of a projected reference: nothing when it is none of UTM and Polar Stereographic in
// metres and degrees. The datum is told by name alone.
std::optional<ProjectionForm> form_of(const OGRSpatialReference& reference);

// The geographic coordinate system that the PROJ database knows by this very name, EPSG's before
// others. Throws Error.
OGRSpatialReference datum_of(const std::string& name);

// The projected reference of a form, axes in the order x, y. Throws Error for an unknown datum.
OGRSpatialReference reference_of(const ProjectionForm& form);

// Throws Error when the PROJ database, on which all names and codes rest, cannot be read.
void require_proj_database();

}  // namespace gridkit
