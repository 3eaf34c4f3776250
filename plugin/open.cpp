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

// Kept on purpose: the list of names is not released, a small loss per image, as the record has no
// place for it.
bool open_detected_image(TsxFile& record, std::int32_t image, const char* path,
                         ReportFrame& frame) {
  gki_Instance* token = gki_GetInit(frame.slot());
  const gks_StringList* names = gkl_LayerGetNames(path, token, frame.slot());
  if (frame.failed("gkl_LayerGetNames failed")) return false;
  const char* first = names != nullptr && names->count > 0 ? names->strings[0] : nullptr;
  constexpr int end_of_options = 0;
  record.tiffLayers[image] =
      gkl_LayerOpen(first, token, frame.slot(), gkl_OptionReadOnly, end_of_options);
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

// Opens the image files beside the annotation; of a negative number there are none. Kept on
// purpose: what is open when one fails stays open, and the directory's buffer stays allocated.
bool open_images(TsxFile& record, ReportFrame& frame) {
  if (record.imageCount > most_images) {
    frame.report(
        "The product must have at most 4 image files; see numberOfLayers in its annotation");
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

// Kept on purpose: never freed, not even with the record, a small loss per product.
char* kept_copy_of_path(const char* fileName) {
  return gks_Duplicate(fileName);
}

// Builds, fills and registers the record. Null without memory; otherwise the record. Kept on
// purpose: a later failure is reported and leaves it unfinished and unregistered, and it is handed
// out.
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

// What an identification opened is closed again. Kept on purpose: however often that takes.
void close_until_it_succeeds(gkf_File* file, ReportFrame& frame) {
  gkf_Close(file, frame.slot());
  while (frame.failed("gkf_Close failed")) {
    frame.print_and_delete();
    gkf_Close(file, frame.slot());
  }
}

// What identifying and opening begin with.
struct Annotation {
  std::int32_t titleIndex = -1;  // 0 when it is recognised
  std::int32_t versionIndex = schema_text_none;
  gkf_File* handle = nullptr;
  bool is_open = false;  // the handle may be null all the same, if the toolkit gave such a one
  TsxFile* registered = nullptr;  // the record of a product that is open already
};

Annotation find_annotation(const char* fileName, const char* mode, ReportFrame& frame) {
  Annotation found;
  found.titleIndex = tsx_FileIdentify(fileName, &found.versionIndex);
  if (found.titleIndex < 0) return found;
  found.handle = gkf_Open(fileName, mode, frame.slot(), 0);
  if (frame.failed("gkf_Open failed")) return found;
  found.is_open = true;
  tsx_RaiseCounter(s_tsxFileTitleIdentifyAndOpenCount,
                   "\n s_tsxFileTitleIdentifyAndOpenCount: %d \n", frame.slot());
  // A counter that has no text must not pass for the failure of an image.
  frame.print_and_delete();
  found.registered = static_cast<TsxFile*>(pool_FindFileHandleIfOpen(fileName, 0));
  return found;
}

std::int32_t identify(const char* fileName, ReportFrame& frame) {
  const Annotation found = find_annotation(fileName, "r", frame);
  frame.print_and_delete();
  close_until_it_succeeds(found.handle, frame);
  return found.titleIndex;
}

TsxFile* identify_and_open(const char* fileName, const char* mode, std::int32_t* titleIndex,
                           ReportFrame& frame) {
  if (asks_for_creation(mode)) {
    frame.report("TerraSAR-X file creation is not supported");
    return nullptr;
  }
  const Annotation found = find_annotation(fileName, mode, frame);
  *titleIndex = found.titleIndex;
  // A product that is open already is shared. Kept on purpose: the handle just opened stays open,
  // unrecorded.
  if (!found.is_open || found.registered != nullptr) return found.registered;
  return open_product(fileName, found.handle, found.versionIndex, frame);
}

}  // namespace

TsxFile* tsxFileTitleIdentifyAndOpen(const char* fileName, int32_t* titleIndex, const char* mode) {
  static const char* const function_word = "tsxFileTitleIdentifyAndOpen";
  ReportFrame frame(function_word);
  std::int32_t title = -1;
  TsxFile* record = nullptr;
  if (mode == nullptr) {
    title = identify(fileName, frame);
  } else {
    record = identify_and_open(fileName, mode, &title, frame);
  }
  if (titleIndex != nullptr) *titleIndex = title;
  return record;
}
