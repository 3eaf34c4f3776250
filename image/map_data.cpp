#include <algorithm>
#include <cstdint>
#include <initializer_list>
#include <iterator>

#include "gridkit/map_projection.h"
#include "gridkit/memory.h"
#include "gridkit/text.h"
#include "record/exports.h"
#include "record/report_frame.h"
#include "record/text_equality.h"
#include "record/tsx_file.h"

namespace {

// Complex and ground-range products lie in radar geometry.
bool has_map(const TsxFile& file) {
  return file.productVariant != variant_ssc && file.productVariant != variant_mgd;
}

bool is_listed(const char* projectionName) {
  constexpr const char* supported[] = {"UTM", "Polar Stereographic"};
  return std::any_of(std::begin(supported), std::end(supported),
                     [&](const char* name) { return tsx_TextEqual(projectionName, name); });
}

// A copy of a text of the toolkit's into `copy`, null for a null one; false without memory.
bool copy_text(const char* text, char** copy) {
  *copy = text == nullptr ? nullptr : gks_Duplicate(text);
  return text == nullptr || *copy != nullptr;
}

}  // namespace

int32_t tsxLayerMapInfoRead(TsxLayer* layer, char** projectionName, double* upperLeftX,
                            double* upperLeftY, double* pixelWidth, double* pixelHeight,
                            char** units) {
  static const char* const function_word = "tsxLayerMapInfoRead";
  ReportFrame frame(function_word);
  // The outs stay as they were: the host reads that as no map.
  if (!has_map(*layer->file)) return 0;
  gkj_MapInfo* info = gkl_MapInfoRead(tiff_layer(*layer->file, layer->layerIndex), 0, frame.slot());
  if (frame.pending() || info == nullptr) {
    frame.report("gkl_MapInfoRead failed");
    return -1;
  }
  const bool has_name = copy_text(info->projectionName, projectionName);
  *upperLeftX = info->upperLeft[0];
  *upperLeftY = info->upperLeft[1];
  *pixelWidth = info->pixelSize[0];
  // Downwards, for the host.
  *pixelHeight = info->pixelSize[1] * -1.0;
  const bool has_units = copy_text(info->units, units);
  gkj_MapInfoFree(&info);
  if (has_name && has_units) return 0;
  frame.report("No memory for the map information");
  return -1;
}

int32_t tsxLayerMapProjectionRead(TsxLayer* layer, char** projectionName, MifValue* mifValue2,
                                  MifValue* mifValue3, MifValue* mifValue4, MifValue* mifValue5,
                                  MifValue* mifValue6, MifValue* mifValue7, MifValue* mifValue8,
                                  MifValue* mifValue9) {
  static const char* const function_word = "tsxLayerMapProjectionRead";
  *projectionName = nullptr;
  for (MifValue* value :
       {mifValue2, mifValue3, mifValue4, mifValue5, mifValue6, mifValue7, mifValue8, mifValue9}) {
    *value = nullptr;
  }
  if (!has_map(*layer->file)) return 0;
  // Kept on purpose: reports of this function are made and neither printed nor deleted.
  gke_Report* left_behind = nullptr;
  ReportFrame frame(function_word, &left_behind);
  gkl_Layer* const image = tiff_layer(*layer->file, layer->layerIndex);
  gkj_Projection* projection = nullptr;
  gkl_LayerMapProjectionRead(image, &projection, frame.slot());
  if (frame.failed("gkl_LayerMapProjectionRead")) return -1;
  // A failure to read the map information is not looked at, nor is its report, which stays behind
  // like the others; the conversion tells the name as well.
  gke_Report* not_looked_at = nullptr;
  gkj_MapInfo* info = gkl_MapInfoRead(image, 0, &not_looked_at);
  char* name_in_image = nullptr;
  if (info != nullptr) copy_text(info->projectionName, &name_in_image);
  *projectionName = name_in_image;
  gkj_ProjectionConvertToMIF(projection, projectionName, mifValue2, mifValue3, mifValue4, mifValue5,
                             mifValue6, mifValue7, mifValue8, mifValue9, frame.slot());
  const bool failed = frame.failed("gkj_ProjectionConvertToMIF");
  if (*projectionName != name_in_image) gkm_HeapFree(name_in_image);
  gkj_MapInfoFree(&info);
  gkj_ProjectionFree(&projection);
  return failed ? -1 : 0;
}

int32_t tsxInstanceMapProjectionIsSupported(void*, const char* projectionName, MifValue mifValue2,
                                            MifValue mifValue3, MifValue mifValue4,
                                            MifValue mifValue5, MifValue mifValue6,
                                            MifValue mifValue7, MifValue mifValue8,
                                            MifValue mifValue9) {
  static const char* const function_word = "tsxInstanceMapProjectionIsSupported";
  // An image without a map is supported.
  if (projectionName == nullptr && mifValue5 == nullptr) return 1;
  ReportFrame frame(function_word);
  std::int32_t answer = is_listed(projectionName) ? 1 : 0;
  gkj_Projection* projection =
      gkj_ProjectionConvertFromMIF(projectionName, mifValue2, mifValue3, mifValue4, mifValue5,
                                   mifValue6, mifValue7, mifValue8, mifValue9, frame.slot());
  // The answer by the name alone stands.
  if (frame.failed("gkj_ProjectionConvertFromMIF failed")) return answer;
  const Gkj_ProParameters* parameters = gkj_MapProjectionCSRGet(projection, "Gkj_ProParameters");
  if (parameters != nullptr && parameters->support->mark != 0) answer = 0;
  gkj_ProjectionFree(&projection);
  return answer;
}
