#include <cstdint>

#include "gridkit/memory.h"
#include "gridkit/preference.h"
#include "gridkit/string_list.h"
#include "image/layer_names.h"
#include "record/exports.h"
#include "record/report_frame.h"
#include "record/run_counters.h"
#include "record/tsx_file.h"

namespace {

constexpr std::int32_t unsigned_pixels = 0;  // "u16"
constexpr std::int32_t signed_pixels = 1;    // "s16"
constexpr std::int32_t athematic = 0;

// Appends a copy of the text; false, and the failure reported, without memory.
bool append(gks_StringList*& list, const char* text, ReportFrame& frame) {
  list = gks_StringListAppend(list, text, frame.slot());
  return !frame.failed("gks_StringListAppend failed");
}

// Names of all layers into `names`. Kept on purpose: and after those of earlier calls into the
// record's own list, which grows.
bool list_names(TsxFile& file, gks_StringList*& names, ReportFrame& frame) {
  for (std::int32_t index = 0; index < file.layerCount; ++index) {
    char* name = tsx_FileLayerNamesGet(&file, index, frame.slot());
    if (frame.failed("tsx_FileLayerNamesGet failed")) {
      gkm_HeapFree(name);
      return false;
    }
    const bool appended = append(file.layerNames, name, frame) && append(names, name, frame);
    gkm_HeapFree(name);
    if (!appended) return false;
  }
  return true;
}

// A failure is a report of its own, printed at once beside that of an earlier one.
void delete_list(gks_StringList* list, const char* function_word) {
  ReportFrame frame(function_word);
  gks_StringListDelete(list, frame.slot());
  if (frame.pending()) frame.report("gks_StringListDelete failed", gke_SeverityWarning);
}

// The preferred block size, truncated toward zero; what 32 bits cannot hold is no size.
std::int32_t preferred_block_size(ReportFrame& frame) {
  const double size = gkp_GetNumberPreference("import", "default_block_size", 64.0, frame.slot());
  constexpr double limit = 2147483648.0;
  return size >= -limit && size < limit ? static_cast<std::int32_t>(size) : 0;
}

}  // namespace

int32_t tsxFileLayerNamesGet(TsxFile* file, int32_t* count, char*** names) {
  static const char* const function_word = "tsxFileLayerNamesGet";
  ReportFrame frame(function_word);
  gks_StringList* gathered = nullptr;
  const bool listed = list_names(*file, gathered, frame);
  if (listed) {
    *count = 0;
    *names = nullptr;
    if (gathered != nullptr) {
      // The array moves to the host; the list is deleted without it.
      *count = gathered->count;
      *names = gathered->strings;
      gathered->count = 0;
      gathered->strings = nullptr;
    }
  }
  delete_list(gathered, function_word);
  return listed ? 0 : -1;
}

int32_t tsxLayerOpen(TsxFile* file, const char* layerName, int32_t* pixelType, int32_t* width,
                     int32_t* height, int32_t* layerType, int32_t* blockWidth, int32_t* blockHeight,
                     TsxLayer** layer) {
  static const char* const function_word = "tsxLayerOpen";
  ReportFrame frame(function_word);
  *layer = nullptr;
  const std::int32_t index = tsx_LayerCheck(file, layerName);
  if (index == -1) {
    frame.report("tsx_LayerCheck failed");
    return 0;
  }
  auto* opened = static_cast<TsxLayer*>(gkm_HeapMalloc(sizeof(TsxLayer)));
  if (opened == nullptr) {
    frame.report("No memory in layeropen");
    return 0;
  }
  *pixelType = is_phase(*file, index) ? signed_pixels : unsigned_pixels;
  *width = file->width;
  *height = file->height;
  *layerType = athematic;
  *blockHeight = file->blockHeight = preferred_block_size(frame);
  *blockWidth = file->blockWidth = preferred_block_size(frame);
  *opened = {file, index};
  *layer = opened;
  tsx_RaiseCounter(s_tsxLayerOpenCount, "\n s_tsxLayerOpenCount: %d \n", frame.slot());
  return 0;
}

int32_t tsxLayerClose(TsxLayer* layer) {
  gkm_HeapFree(layer);
  tsx_RaiseCounter(s_tsxLayerCloseCount, "\n s_tsxLayerCloseCount: %d \n", nullptr);
  return 0;
}
