#include "geometry/mif_node.h"

#include <cstddef>

#include "gridkit/memory.h"
#include "gridkit/text.h"
#include "record/report_frame.h"

void tsx_CreateMIFNode(const void* object, gkd_Dictionary* open_dictionary, gkd_Design* design,
                       void** data, std::int32_t* size, char** dictionary, char** typeName,
                       gke_Report** err) {
  static const char* const function_word = "tsx_CreateMIFNode";
  ReportFrame frame(function_word, err);
  gkd_DictionaryAddDesign(open_dictionary, design, frame.slot());
  if (frame.failed("dictionary add failed")) return;
  *dictionary = gkd_DictionaryEncodeToString(open_dictionary, frame.slot());
  if (frame.failed("gkd_DictionaryEncodeToString failed")) return;
  *size = gkd_ObjectSize(object, design, frame.slot());
  if (frame.failed("gkd_ObjectSize failed")) return;
  *typeName = gks_Sprintf(nullptr, "%s", frame.slot(), design->name);
  if (frame.failed("gks_Sprintf failed")) return;
  *data = gkm_HeapMalloc(static_cast<std::size_t>(*size));
  if (*data == nullptr) {
    frame.report("No Memory in vexcel_slc_CreateMIFNode");
    return;
  }
  gkd_ConvertToMIF(0, object, design, *data, frame.slot());
  frame.failed("failing in gkd_ConvertToMIF");
}
