// The operations of the tests' toolkit for maps, dictionaries and the orbit model.

#include <cstdarg>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "gridkit/dictionary.h"
#include "gridkit/map_projection.h"
#include "gridkit/memory.h"
#include "rmdllib/model_ephemeris.h"
#include "support/fake_parts.h"
#include "support/fake_toolkit.h"

using namespace fake;

struct gkd_Dictionary {
  std::vector<const gkd_Design*> designs;
};
struct gkj_Projection {
  gkj_ProSupport support;
  Gkj_ProParameters parameters;
};

namespace {

// Dictionaries belong to the toolkit and end with the program.
std::vector<std::unique_ptr<gkd_Dictionary>> dictionaries;

}  // namespace

gkd_Dictionary* gkd_DictionaryCreate(gke_Report** err) {
  if (failed("gkd_DictionaryCreate", err)) return nullptr;
  return dictionaries.emplace_back(std::make_unique<gkd_Dictionary>()).get();
}
gkd_Design* gkd_DesignCreate(gkd_Dictionary*, const char* name, gke_Report** err, ...) {
  if (failed("gkd_DesignCreate", err)) return nullptr;
  toolkit().log.push_back(std::string("design ") + name);
  auto* design = static_cast<gkd_Design*>(new_block(sizeof(gkd_Design), "design"));
  design->name = name;
  return design;
}
void gkd_DictionaryAddDesign(gkd_Dictionary* dictionary, gkd_Design* design, gke_Report** err) {
  if (failed("gkd_DictionaryAddDesign", err)) return;
  if (design != nullptr) {
    dictionary->designs.push_back(design);
  } else if (err != nullptr) {
    *err = gke_CreateErrorReport("gkd_DictionaryAddDesign", 0, gke_SeverityError, *err, "no design",
                                 0);
  }
}
char* gkd_DictionaryEncodeToString(const gkd_Dictionary* dictionary, gke_Report** err) {
  if (failed("gkd_DictionaryEncodeToString", err)) return nullptr;
  return new_text((std::string("dictionary of ") + dictionary->designs.back()->name).c_str());
}
int32_t gkd_ObjectSize(const void*, const gkd_Design*, gke_Report** err) {
  return failed("gkd_ObjectSize", err) ? -1 : 4;
}
void gkd_ConvertToMIF(int32_t, const void* object, const gkd_Design*, void* buffer,
                      gke_Report** err) {
  if (!failed("gkd_ConvertToMIF", err)) std::memcpy(buffer, object, 4);
}
void gkd_DesignDestroy(gkd_Design* design) {
  if (design == nullptr) return;
  toolkit().log.push_back(std::string("destroy ") + design->name);
  gkm_HeapFree(design);
}

static char* map_text(const char* field, const char* text) {
  return toolkit().null_map_texts.contains(field) ? nullptr : new_text(text, "map");
}
gkj_MapInfo* gkl_MapInfoRead(gkl_Layer*, int32_t, gke_Report** err) {
  if (err != nullptr) ++toolkit().map_info_slots;
  if (failed("gkl_MapInfoRead", err)) return nullptr;
  auto* info = static_cast<gkj_MapInfo*>(new_block(sizeof(gkj_MapInfo), "map"));
  info->projectionName = map_text("projectionName", "UTM");
  info->upperLeft = static_cast<double*>(new_block(2 * sizeof(double), "map"));
  info->upperLeft[0] = 500000.5;
  info->upperLeft[1] = 4200000.25;
  info->pixelSize = static_cast<double*>(new_block(2 * sizeof(double), "map"));
  info->pixelSize[0] = 2.5;
  info->pixelSize[1] = 1.25;
  info->units = map_text("units", "metre");
  return info;
}
void gkj_MapInfoFree(gkj_MapInfo** info) {
  if (*info == nullptr) return;
  gkm_HeapFree((*info)->projectionName);
  gkm_HeapFree((*info)->upperLeft);
  gkm_HeapFree((*info)->pixelSize);
  gkm_HeapFree((*info)->units);
  gkm_HeapFree(*info);
  *info = nullptr;
}

namespace {

gkj_Projection* new_projection() {
  auto* projection = static_cast<gkj_Projection*>(new_block(sizeof(gkj_Projection), "map"));
  projection->support.mark = toolkit().projection_mark;
  projection->parameters.support = &projection->support;
  return projection;
}

}  // namespace

void gkl_LayerMapProjectionRead(gkl_Layer*, gkj_Projection** projection, gke_Report** err) {
  if (!failed("gkl_LayerMapProjectionRead", err)) *projection = new_projection();
}
void gkj_ProjectionFree(gkj_Projection** projection) {
  gkm_HeapFree(*projection);
  *projection = nullptr;
}
const Gkj_ProParameters* gkj_MapProjectionCSRGet(const gkj_Projection* projection,
                                                 const char* typeName) {
  toolkit().log.emplace_back(typeName);
  if (failed("gkj_MapProjectionCSRGet", nullptr)) return nullptr;
  return &projection->parameters;
}
void gkj_ProjectionConvertToMIF(const gkj_Projection*, char** projectionName, gkj_MifValue* v2,
                                gkj_MifValue* v3, gkj_MifValue* v4, gkj_MifValue* v5,
                                gkj_MifValue* v6, gkj_MifValue* v7, gkj_MifValue* v8,
                                gkj_MifValue* v9, gke_Report** err) {
  if (failed("gkj_ProjectionConvertToMIF", err)) return;
  *projectionName = new_text("UTM of the projection");
  char text[] = "2";
  for (gkj_MifValue* value : {v2, v3, v4, v5, v6, v7, v8, v9}) {
    *value = new_text(text);
    ++text[0];
  }
}
gkj_Projection* gkj_ProjectionConvertFromMIF(const char*, gkj_MifValue v2, gkj_MifValue v3,
                                             gkj_MifValue v4, gkj_MifValue v5, gkj_MifValue v6,
                                             gkj_MifValue v7, gkj_MifValue v8, gkj_MifValue v9,
                                             gke_Report** err) {
  if (failed("gkj_ProjectionConvertFromMIF", err)) return nullptr;
  for (const gkj_MifValue value : {v2, v3, v4, v5, v6, v7, v8, v9}) {
    toolkit().log.emplace_back(value == nullptr ? "null" : static_cast<const char*>(value));
  }
  return new_projection();
}

void rmdl_modelEphemeris(RadarGenericModel* model, gke_Report** err) {
  if (!failed("rmdl_modelEphemeris", err)) model->rs_coeffs[0] = toolkit().modelled;
}
