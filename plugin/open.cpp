#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>

#include "geometry/sensor_model.h"
#include "gridkit/file.h"
#include "gridkit/instance.h"
#include "gridkit/layer.h"
#include "gridkit/memory.h"
#include "gridkit/text.h"
#include "handlepool/handlepool.h"
#include "plugin/document.h"
#include "plugin/general_parameters.h"
#include "plugin/identify.h"
#include "plugin/product_record.h"
#include "plugin/schema_version.h"
#include "record/exports.h"
#include "record/report_frame.h"
#include "record/run_counters.h"
#include "record/text_equality.h"
#include "record/tsx_file.h"

namespace {

// Modes that would create a file. "w" and "wb" are not among them, deliberately.
bool asks_for_creation(const char* mode) {
  constexpr const char* modes[] = {"a", "ab", "w+", "wb+", "w+b"};
  return std::any_of(std::begin(modes), std::end(modes),
                     [&](const char* refused) { return tsx_TextEqual(mode, refused); });
}

bool parse_annotation(TsxFile& record, std::int32_t versionIndex, ReportFrame& frame) {
  lmx::elmx_error error{lmx::error_cannot_open};
  record.product = tsx_ConstructDocument(versionIndex, record.fileName, &error);
  if (record.product != nullptr && error == 0) return true;
  frame.report("Wrong XML schema file detected");
  return false;
}

bool open_complex_image(TsxFile& record, std::int32_t image, const char* path, ReportFrame& frame) {
  record.cosarFiles[image] = gkf_fopen(path, "r");
  if (record.cosarFiles[image] != nullptr) return true;
  frame.report("gkf_fopen failed");
  return false;
}

// The list of names is not released: a small loss per image, as the record has no place for it.
bool open_detected_image(TsxFile& record, std::int32_t image, const char* path,
                         ReportFrame& frame) {
  constexpr int read_only_option = 25;
  gki_Instance* token = gki_GetInit(frame.slot());
  const gks_StringList* names = gkl_LayerGetNames(path, token, frame.slot());
  if (frame.failed("gkl_LayerGetNames failed")) return false;
  const char* first = names != nullptr && names->count > 0 ? names->strings[0] : nullptr;
  record.tiffLayers[image] = gkl_LayerOpen(first, token, frame.slot(), read_only_option, 0);
  return !frame.failed("gkl_LayerOpen failed");
}

bool open_image(TsxFile& record, std::int32_t image, const char* directory, ReportFrame& frame) {
  const auto index = static_cast<std::uint32_t>(image);
  char* path =
      gks_Sprintf(nullptr, "%s%s/%s", frame.slot(), directory, record.product->imageDataPath(index),
                  record.product->imageDataFilename(index));
  const auto open_file =
      record.productVariant == variant_ssc ? open_complex_image : open_detected_image;
  const bool opened = open_file(record, image, path, frame);
  gkm_HeapFree(path);
  return opened;
}

// Opens the image files beside the annotation. What is open when one fails stays open, and the
// directory's buffer stays allocated.
bool open_images(TsxFile& record, ReportFrame& frame) {
  if (record.imageCount < 0 || record.imageCount > most_images) {
    frame.report("The product must have 0 to 4 image files; see numberOfLayers in its annotation");
    return false;
  }
  const std::size_t size = gkt_Text_strlen(record.fileName);
  auto* directory = static_cast<char*>(gkm_HeapMalloc(size));
  if (directory == nullptr) {
    frame.report("No memory for the product's directory");
    return false;
  }
  gks_GetPathPart(record.fileName, directory, size);
  for (std::int32_t image = 0; image < record.imageCount; ++image) {
    if (!open_image(record, image, directory, frame)) return false;
  }
  gkm_HeapFree(directory);
  return true;
}

// Never freed, not even with the record: a small loss per product that is meant.
char* kept_copy_of_path(const char* fileName) {
  return gks_Duplicate(fileName);
}

// Builds, fills and registers the record. Null without memory; otherwise the record, which a
// failure behind this point leaves unfinished and unregistered, with the failure reported.
TsxFile* open_product(const char* fileName, gkf_File* xmlFile, std::int32_t versionIndex,
                      ReportFrame& frame) {
  TsxFile* record = tsx_CreateRecord();
  if (record == nullptr) {
    frame.report("No memory for TsxFile structure");
    return nullptr;
  }
  record->fileName = kept_copy_of_path(fileName);
  record->xmlFile = xmlFile;
  if (record->fileName == nullptr) {
    frame.report("No memory for the product's path");
    return record;
  }
  if (!parse_annotation(*record, versionIndex, frame)) return record;
  tsx_ReadGeneralParms(record);
  if (record->productVariant == variant_ssc || record->productVariant == variant_mgd) {
    tsx_GenericSARRead(record, frame.slot());
    if (frame.failed("tsx_GenericSARRead failed")) return record;
  }
  if (!open_images(*record, frame)) return record;
  if (pool_AddFileHandleToList(record, record->fileName, &tsx_ReleaseRecord) != 0) {
    frame.report("pool_AddFileHandleToList failed");
  }
  return record;
}

// What an identification opened is closed again, however often that takes.
void close_until_it_succeeds(gkf_File* file, ReportFrame& frame) {
  gkf_Close(file, frame.slot());
  while (frame.failed("gkf_Close failed")) {
    frame.print_and_delete();
    gkf_Close(file, frame.slot());
  }
}

struct Opening {
  std::int32_t identified = -1;
  gkf_File* xmlFile = nullptr;
  TsxFile* record = nullptr;
};

void identify_and_open(Opening& opening, const char* fileName, const char* mode,
                       ReportFrame& frame) {
  if (asks_for_creation(mode)) {
    frame.report("TerraSAR-X file creation is not supported");
    return;
  }
  std::int32_t versionIndex = schema_text_none;
  opening.identified = tsx_FileIdentify(fileName, &versionIndex);
  if (opening.identified < 0) return;
  opening.xmlFile = gkf_Open(fileName, mode != nullptr ? mode : "r", frame.slot(), 0);
  if (frame.failed("gkf_Open failed")) return;
  tsx_RaiseCounter(s_tsxFileTitleIdentifyAndOpenCount, "s_tsxFileTitleIdentifyAndOpenCount",
                   frame.slot());
  // A counter that has no text must not pass for the failure of an image.
  frame.print_and_delete();
  // A product that is open already is shared; the handle just opened stays open, unrecorded.
  opening.record = static_cast<TsxFile*>(pool_FindFileHandleIfOpen(fileName, 0));
  if (opening.record != nullptr || mode == nullptr) return;
  opening.record = open_product(fileName, opening.xmlFile, versionIndex, frame);
}

}  // namespace

TsxFile* tsxFileTitleIdentifyAndOpen(const char* fileName, int32_t* titleIndex, const char* mode) {
  static const char* const function_word = "tsxFileTitleIdentifyAndOpen";
  ReportFrame frame(function_word);
  Opening opening;
  identify_and_open(opening, fileName, mode, frame);
  frame.print_and_delete();
  if (mode == nullptr) close_until_it_succeeds(opening.xmlFile, frame);
  if (titleIndex != nullptr) *titleIndex = opening.identified;
  return mode != nullptr ? opening.record : nullptr;
}
