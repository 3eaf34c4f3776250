#include <cstddef>
#include <cstdint>
#include <iterator>
#include <span>

#include "geometry/designs.h"
#include "geometry/mif_node.h"
#include "gridkit/dictionary.h"
#include "gridkit/memory.h"
#include "gridkit/text.h"
#include "plugin/string_lists.h"
#include "record/exports.h"
#include "record/report_frame.h"
#include "record/tsx_file.h"

namespace {

constexpr const char* radar_name = ":RADAR_Generic_v2.2";
constexpr const char* beta0_name = ":TSX_Beta0";

// What a product of the variant offers; nothing for a variant outside the four.
std::span<const char* const> names_of(std::int32_t variant) {
  static constexpr const char* names[] = {radar_name, beta0_name};
  switch (variant) {
    case variant_ssc:
    case variant_mgd:
      return names;
    case variant_gec:
    case variant_eec:
      return std::span(names).last(1);
    default:
      return {};
  }
}

// Kept on purpose: case aside, and whatever follows the name.
bool asks_for(const char* dataName, const char* name) {
  return gks_Eqnic(dataName, name, gkt_Text_strlen(name)) != 0;
}

}  // namespace

int32_t tsxFileRasterFormatsNonStandardDataNamesGet(TsxFile* file, int32_t* count, char*** names) {
  static const char* const function_word = "tsxFileRasterFormatsNonStandardDataNamesGet";
  ReportFrame frame(function_word);
  const auto offered = names_of(file->productVariant);
  if (offered.empty()) return -1;
  auto** list = static_cast<char**>(gkm_HeapMalloc(offered.size() * sizeof(char*)));
  if (list == nullptr) {
    frame.report("No memory for the list of names");
    return -1;
  }
  for (std::size_t i = 0; i < offered.size(); ++i) {
    list[i] = gks_Sprintf(nullptr, "%s", frame.slot(), offered[i]);
    if (!frame.failed("gks_Sprintf failed.")) continue;
    tsx_StringListFree(&list, static_cast<std::int32_t>(i));
    return -1;
  }
  *count = static_cast<std::int32_t>(offered.size());
  *names = list;
  return 0;
}

// Kept on purpose: the dictionary, and the design of the calibration factor, stay with the host's
// toolkit, which ends them; the design of the sensor model is destroyed here.
int32_t tsxFileDataRead(TsxFile* file, const char* dataName, void** data, int32_t* size,
                        char** dictionary, char** typeName) {
  static const char* const function_word = "tsxFileDataRead";
  ReportFrame frame(function_word);
  gkd_Dictionary* open_dictionary = gkd_DictionaryCreate(frame.slot());
  if (frame.failed("dictionary create failed")) return -1;
  if (asks_for(dataName, radar_name)) {
    gkd_Design* design = tsx_CreateRadarDesign(open_dictionary, frame.slot());
    tsx_CreateMIFNode(file->sarModel, open_dictionary, design, data, size, dictionary, typeName,
                      frame.slot());
    const bool failed = frame.failed("Creating MIF Node failed.");
    gkd_DesignDestroy(design);
    return failed ? -1 : 0;
  }
  if (asks_for(dataName, beta0_name)) {
    gkd_Design* design = tsx_CreateBeta0Design(open_dictionary, frame.slot());
    tsx_CreateMIFNode(file->beta0, open_dictionary, design, data, size, dictionary, typeName,
                      frame.slot());
    return frame.failed("Creating MIF Node failed.") ? -1 : 0;
  }
  return 0;
}
