#include "gridkit/maps/projection_form.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <memory>
#include <span>
#include <string_view>
#include <utility>

#include <ogr_srs_api.h>

#include "gridkit/error.h"
#include "gridkit/layers/gdal_support.h"

namespace gridkit {

namespace {

constexpr double utm_scale_factor = 0.9996;
constexpr double utm_false_easting = 500000;
constexpr double utm_false_northing_south = 10000000;

constexpr double central_meridian(int zone) {
  return 6.0 * zone - 183.0;
}

// A parameter as the reference states it; one that it does not state is its default.
double parameter(const OGRSpatialReference& reference, const char* name, double otherwise = 0) {
  return reference.GetProjParm(name, otherwise, nullptr);
}

bool in_metres_and_degrees(const OGRSpatialReference& reference) {
  const char* angle = nullptr;
  reference.GetAngularUnits(&angle);
  return reference.GetLinearUnits(nullptr) == 1.0 && angle != nullptr &&
         std::string_view(angle) == "degree";
}

std::optional<ProjectionForm> utm_of(const OGRSpatialReference& reference) {
  const double zone = (parameter(reference, SRS_PP_CENTRAL_MERIDIAN) + 183.0) / 6.0;
  if (!(zone >= 1 && zone <= 60) || zone != std::floor(zone)) return std::nullopt;
  const double northing = parameter(reference, SRS_PP_FALSE_NORTHING);
  const ProjectionForm form = utm_form(static_cast<int>(zone), northing != 0);
  const bool is_utm = parameter(reference, SRS_PP_LATITUDE_OF_ORIGIN) == 0 &&
                      parameter(reference, SRS_PP_SCALE_FACTOR, 1) == form.scale_factor &&
                      parameter(reference, SRS_PP_FALSE_EASTING) == form.false_easting &&
                      northing == form.false_northing;
  return is_utm ? std::optional(form) : std::nullopt;
}

// The latitude of origin is the pole itself, with a scale factor there, or the latitude of true
// scale.
std::optional<ProjectionForm> polar_stereographic_of(const OGRSpatialReference& reference) {
  ProjectionForm form;
  form.method = ProjectionForm::Method::polar_stereographic;
  const double latitude = parameter(reference, SRS_PP_LATITUDE_OF_ORIGIN);
  form.south = latitude < 0;
  form.longitude = parameter(reference, SRS_PP_CENTRAL_MERIDIAN);
  form.scale_factor = parameter(reference, SRS_PP_SCALE_FACTOR, 1);
  if (std::abs(latitude) != 90) form.true_scale_latitude = latitude;
  form.false_easting = parameter(reference, SRS_PP_FALSE_EASTING);
  form.false_northing = parameter(reference, SRS_PP_FALSE_NORTHING);
  const bool scaled_twice = form.true_scale_latitude && form.scale_factor != 1;
  return latitude == 0 || scaled_twice ? std::nullopt : std::optional(form);
}

struct CrsListDeleter {
  void operator()(OSRCRSInfo** list) const { OSRDestroyCRSInfoList(list); }
};

// "AUTHORITY:CODE" of the geographic coordinate system of a name among those of an authority, of
// all authorities for null; empty when there is none.
std::string code_of(const std::string& name, const char* authority) {
  int count = 0;
  const std::unique_ptr<OSRCRSInfo*, CrsListDeleter> list(
      OSRGetCRSInfoListFromDatabase(authority, nullptr, &count));
  const std::span entries(list.get(), static_cast<std::size_t>(list == nullptr ? 0 : count));
  const auto found = std::find_if(entries.begin(), entries.end(), [&](const OSRCRSInfo* entry) {
    return entry->eType == OSR_CRS_TYPE_GEOGRAPHIC_2D && name == entry->pszName;
  });
  if (found == entries.end()) return "";
  return std::string((*found)->pszAuthName) + ':' + (*found)->pszCode;
}

// Listing the database takes tens of milliseconds; nearly every image has one of these.
std::string code_of(const std::string& name) {
  constexpr std::pair<std::string_view, const char*> common[] = {
      {"WGS 84", "EPSG:4326"}, {"ETRS89", "EPSG:4258"}, {"WGS 72", "EPSG:4322"}};
  const auto known =
      std::find_if(std::begin(common), std::end(common), [&](auto& c) { return c.first == name; });
  if (known != std::end(common)) return known->second;
  const std::string code = code_of(name, "EPSG");
  return code.empty() ? code_of(name, nullptr) : code;
}

// By code alone: a text of this kind never names a file or an address.
bool import(OGRSpatialReference& reference, const std::string& code) {
  constexpr const char* code_only[] = {"ALLOW_FILE_ACCESS=NO", "ALLOW_NETWORK_ACCESS=NO", nullptr};
  return reference.SetFromUserInput(code.c_str(), code_only) == OGRERR_NONE;
}

}  // namespace

const char* name_of(ProjectionForm::Method method) {
  return method == ProjectionForm::Method::utm ? "UTM" : "Polar Stereographic";
}

ProjectionForm utm_form(int zone, bool south) {
  ProjectionForm form;
  form.zone = zone;
  form.south = south;
  form.scale_factor = utm_scale_factor;
  form.false_easting = utm_false_easting;
  form.false_northing = south ? utm_false_northing_south : 0;
  return form;
}

bool has_its_own_constants(const ProjectionForm& form) {
  if (form.method != ProjectionForm::Method::utm) return true;
  const ProjectionForm own = utm_form(form.zone, form.south);
  return form.scale_factor == own.scale_factor && form.false_easting == own.false_easting &&
         form.false_northing == own.false_northing;
}

std::optional<ProjectionForm> form_of(const OGRSpatialReference& reference) {
  const char* method = reference.GetAttrValue("PROJECTION");
  if (!reference.IsProjected() || method == nullptr || !in_metres_and_degrees(reference)) {
    return std::nullopt;
  }
  std::optional<ProjectionForm> form;
  if (std::string_view(method) == SRS_PT_TRANSVERSE_MERCATOR) form = utm_of(reference);
  if (std::string_view(method) == SRS_PT_POLAR_STEREOGRAPHIC) {
    form = polar_stereographic_of(reference);
  }
  const char* datum = reference.GetAttrValue("GEOGCS");
  if (form && datum != nullptr) form->datum = datum;
  return form;
}

OGRSpatialReference datum_of(const std::string& name) {
  const GdalMessages messages;
  require_proj_database();
  const std::string code = code_of(name);
  OGRSpatialReference datum;
  if (code.empty() || !import(datum, code)) {
    throw Error("the datum \"" + name + "\" is not in the PROJ database");
  }
  return datum;
}

OGRSpatialReference reference_of(const ProjectionForm& form) {
  const OGRSpatialReference datum = datum_of(form.datum);
  const GdalMessages messages;
  OGRSpatialReference reference;
  reference.SetProjCS(name_of(form.method));
  bool made = reference.CopyGeogCSFrom(&datum) == OGRERR_NONE;
  if (form.method == ProjectionForm::Method::utm) {
    made = made && reference.SetTM(0, central_meridian(form.zone), form.scale_factor,
                                   form.false_easting, form.false_northing) == OGRERR_NONE;
  } else {
    const double pole = form.south ? -90 : 90;
    made = made && reference.SetPS(form.true_scale_latitude.value_or(pole), form.longitude,
                                   form.scale_factor, form.false_easting,
                                   form.false_northing) == OGRERR_NONE;
  }
  made = made && reference.SetLinearUnits(SRS_UL_METER, 1.0) == OGRERR_NONE;
  if (!made) throw Error("no projection can be made of it: " + messages.first_or("unknown reason"));
  reference.SetAxisMappingStrategy(OAMS_TRADITIONAL_GIS_ORDER);
  return reference;
}

void require_proj_database() {
  const GdalMessages messages;
  OGRSpatialReference wgs84;
  if (wgs84.importFromEPSG(4326) == OGRERR_NONE) return;
  throw Error("the PROJ database cannot be read (is PROJ_LIB the folder of proj.db?): " +
              messages.first_or("unknown reason"));
}

}  // namespace gridkit
