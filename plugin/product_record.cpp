#include "plugin/product_record.h"

#include <memory>
#include <new>

#include "gridkit/memory.h"
#include "record/report_frame.h"

namespace {

bool close_images(const TsxFile& record, ReportFrame& frame) {
  for (std::int32_t image = 0; image < record.imageCount; ++image) {
    if (record.productVariant == variant_ssc) {
      if (gkf_fclose(record.cosarFiles[image]) == 0) continue;
      frame.report("Closing COSAR image file failed");
      return false;
    }
    gkl_LayerClose(record.tiffLayers[image], frame.slot());
    if (frame.failed("Closing TIFF image file failed")) return false;
  }
  return true;
}

bool delete_list(gks_StringList* list, ReportFrame& frame) {
  if (list != nullptr) gks_StringListDelete(list, frame.slot());
  return !frame.failed("gks_StringListDelete failed");
}

void free_arrays(const RadarGenericModel& model) {
  for (const RadarArray* array :
       {&model.rsx, &model.rsy, &model.rsz, &model.vsx, &model.vsy, &model.vsz}) {
    if (array->elements != nullptr) gkm_HeapFree(array->elements);
  }
}

}  // namespace

TsxFile* tsx_CreateRecord() {
  std::unique_ptr<TsxFile> record(new (std::nothrow) TsxFile());
  std::unique_ptr<RadarGenericModel> model(new (std::nothrow) RadarGenericModel());
  std::unique_ptr<TsxBeta0> beta0(new (std::nothrow) TsxBeta0());
  if (record == nullptr || model == nullptr || beta0 == nullptr) return nullptr;
  record->productVariant = variant_unknown;
  record->sarModel = model.release();
  record->beta0 = beta0.release();
  return record.release();
}

// Kept on purpose: the first step that fails ends the release, and the path and the map
// projection's name are not freed at all.
void fileFree(TsxFile* record) {
  static const char* const function_word = "fileFree";
  // The slot is the function's own, so that a report on the way out is left as it is.
  gke_Report* left_behind = nullptr;
  ReportFrame frame(function_word, &left_behind);
  if (!close_images(*record, frame)) return;
  if (!delete_list(record->layerNames, frame)) return;
  if (!delete_list(record->auxLayerNames, frame)) return;
  delete record->product;
  record->product = nullptr;
  if (record->xmlFile != nullptr) gkf_Close(record->xmlFile, frame.slot());
  if (frame.failed("Closing XML file failed")) return;
  free_arrays(*record->sarModel);
  delete record->sarModel;
  delete record->beta0;
  delete record;
}

std::int32_t tsx_ReleaseRecord(void* record) {
  if (record != nullptr) fileFree(static_cast<TsxFile*>(record));
  return 0;
}
