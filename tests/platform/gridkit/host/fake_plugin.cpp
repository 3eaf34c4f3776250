// A format plug-in for the host's tests. A file named *.fake is its own; what else stands in the
// name chooses how it behaves: "late" hands out an unfinished record, "early" none with a report,
// "throw" throws, "files", "streams" and "layers" open "../outside.tif" beside the file's folder.
// Images are 10 wide and H high, H being the number after "h" in the name; pixel = line number
// + 1. Blocks that start at or after line H - 7 are refused, and those that reach past the last
// line or, with the last line, past the right edge.

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include "gridkit/dictionary.h"
#include "gridkit/file.h"
#include "gridkit/layer.h"
#include "gridkit/memory.h"
#include "gridkit/preference.h"
#include "gridkit/report.h"
#include "gridkit/text.h"
#include "handlepool/handlepool.h"

#define FAKE_EXPORT extern "C" __attribute__((visibility("default")))

namespace {

constexpr int32_t width = 10;

struct Record {
  std::string path;
  int32_t height;
  int32_t block;
};
struct OpenLayer {
  Record* record;
};

int32_t closes = 0;

int32_t end_record(void* record) {
  ++closes;
  delete static_cast<Record*>(record);
  return 0;
}

int32_t one_text(char*** list, const char* text) {
  *list = static_cast<char**>(gkm_HeapMalloc(sizeof(char*)));
  **list = gks_Duplicate(text);
  return 0;
}

bool has(const std::string& path, const char* part) {
  return path.find(part) != std::string::npos;
}

void report(const char* message) {
  gke_Report* made = gke_CreateErrorReport("fake", 1, gke_SeverityError, nullptr, message, 0);
  gke_PrintErrorReport(made, 0, 0);
  gke_DeleteErrorReportEx(&made);
}

// False, and a report, where that was asked for and refused.
bool open_what_lies_outside(const std::string& path) {
  const std::string outside = path.substr(0, path.rfind('/')) + "/../outside.tif";
  gke_Report* failed = nullptr;
  if (has(path, "files")) gkf_Close(gkf_Open(outside.c_str(), "r", &failed, 0), nullptr);
  if (has(path, "layers")) {
    gks_StringListDelete(gkl_LayerGetNames(outside.c_str(), gki_GetInit(nullptr), &failed),
                         nullptr);
  }
  const bool has_failed = failed != nullptr;
  gke_PrintErrorReport(failed, 0, 0);
  gke_DeleteErrorReportEx(&failed);
  if (!has(path, "streams")) return !has_failed;
  gkf_Stream* stream = gkf_fopen(outside.c_str(), "r");
  if (stream == nullptr) report("no stream");
  return stream != nullptr && gkf_fclose(stream) == 0;
}

}  // namespace

FAKE_EXPORT int32_t fakeCloses() {
  return closes;
}

FAKE_EXPORT int32_t fakeInstanceDescriptionGet(char** text) {
  *text = gks_Duplicate("made for tests");
  return 0;
}
FAKE_EXPORT int32_t fakeInstanceTitleListGet(int32_t* count, char*** list) {
  *count = 1;
  return one_text(list, "Fake");
}
FAKE_EXPORT int32_t fakeInstanceTemplateListGet(char*** list, unsigned char** flags) {
  *flags = static_cast<unsigned char*>(gkm_HeapMalloc(1));
  return one_text(list, "*.fake");
}
FAKE_EXPORT int32_t fakeInstanceExtListGet(char*** list) {
  return one_text(list, ".fake");
}
FAKE_EXPORT int32_t fakeInstanceShortNameListGet(char*** list) {
  return one_text(list, "fake");
}
FAKE_EXPORT int32_t fakeInstancePixelTypesGet(int32_t* count, char*** list) {
  *count = 1;
  return one_text(list, "u16");
}
FAKE_EXPORT int32_t fakeInstanceLayerTypesGet(int32_t* count, char*** list) {
  *count = 1;
  return one_text(list, "plain");
}
FAKE_EXPORT int32_t fakeInstanceMapProjectionIsSupported(void*, const char*, void*, void*, void*,
                                                         void*, void*, void*, void*, void*) {
  return 0;
}
FAKE_EXPORT Record* fakeFileTitleIdentifyAndOpen(const char* file, int32_t* title,
                                                 const char* mode) {
  const std::string path = file;
  *title = path.ends_with(".fake") ? 0 : -1;
  if (*title < 0 || mode == nullptr) return nullptr;
  if (void* known = pool_FindFileHandleIfOpen(file, 0)) return static_cast<Record*>(known);
  if (has(path, "throw")) throw std::bad_alloc();
  if (has(path, "early")) report("no record at all");
  if (has(path, "early")) return nullptr;
  if (!open_what_lies_outside(path)) return nullptr;
  const auto h = path.rfind('h');
  auto* record = new Record{path, std::atoi(path.c_str() + h + 1), 4};
  if (has(path, "late")) {
    report("broken late");
    static std::vector<std::unique_ptr<Record>> unfinished;
    return unfinished.emplace_back(record).get();
  }
  pool_AddFileHandleToList(record, file, end_record);
  return record;
}
FAKE_EXPORT int32_t fakeFileClose(Record* record) {
  pool_RemoveFileHandleFromList(record->path.c_str(), 0);
  return 0;
}
FAKE_EXPORT int32_t fakeFileDataModTimeGet(Record*, const char*, int64_t*) {
  return 0;
}
FAKE_EXPORT int32_t fakeFileLayerNamesGet(Record* record, int32_t* count, char*** names) {
  if (has(record->path, "nolayers")) {
    report("cannot list");
    return -1;
  }
  *count = 1;
  return one_text(names, "ONE");
}
FAKE_EXPORT int32_t fakeFileRasterFormatsNonStandardDataNamesGet(Record*, int32_t*, char***) {
  return -1;
}
FAKE_EXPORT int32_t fakeFileDataRead(Record*, const char* name, void** data, int32_t* size,
                                     char** dictionary, char** type) {
  if (has(name, "dictionary")) {
    // Both are left to the toolkit.
    gkd_Dictionary* left = gkd_DictionaryCreate(nullptr);
    gkd_DesignCreate(left, "LEFT", nullptr, gkd_Double, "value", 0);
    if (has(name, "failing")) report("no data");
    return has(name, "failing") ? -1 : 0;
  }
  if (std::string(name) != "known") return 0;
  *data = gkm_MemDup("\1\2", 2);
  *size = 2;
  *dictionary = gks_Duplicate("D");
  *type = gks_Duplicate("T");
  return 0;
}
FAKE_EXPORT int32_t fakeLayerOpen(Record* record, const char* name, int32_t* pixelType, int32_t* w,
                                  int32_t* h, int32_t* layerType, int32_t* bw, int32_t* bh,
                                  OpenLayer** layer) {
  *layer = nullptr;
  if (std::string(name) != "ONE") {
    report("no such name");
    return 0;
  }
  *pixelType = *layerType = 0;
  *w = width;
  *h = record->height;
  record->block =
      static_cast<int32_t>(gkp_GetNumberPreference("import", "default_block_size", 4, nullptr));
  *bw = *bh = record->block;
  *layer = new OpenLayer{record};
  return 0;
}
FAKE_EXPORT int32_t fakeLayerClose(OpenLayer* layer) {
  delete layer;
  return 0;
}
FAKE_EXPORT int32_t fakeLayerRasterRead(OpenLayer* layer, int32_t row, int32_t column,
                                        void** pixels) {
  const Record& record = *layer->record;
  if (has(record.path, "fails")) {
    report("no pixels");
    return -1;
  }
  const int32_t size = record.block;
  const int32_t end = (row + 1) * size;
  const bool past = end > record.height || (end == record.height && (column + 1) * size > width);
  if (row * size >= record.height - 7 || past) {
    *pixels = nullptr;
    return 0;
  }
  auto* target = static_cast<uint16_t*>(*pixels);
  for (int32_t r = 0; r < size; ++r) {
    for (int32_t c = 0; c < size; ++c) *target++ = static_cast<uint16_t>(row * size + r + 1);
  }
  return 0;
}
FAKE_EXPORT int32_t fakeLayerMapInfoRead(OpenLayer* layer, char** projection, double* x, double* y,
                                         double* w, double* h, char** units) {
  if (!has(layer->record->path, "map")) return 0;
  *projection = gks_Duplicate("UTM");
  *units = gks_Duplicate("m");
  *x = *y = *w = *h = 2;
  return 0;
}
FAKE_EXPORT int32_t fakeLayerMapProjectionRead(OpenLayer* layer, char** projection, void** v2,
                                               void** v3, void** v4, void** v5, void** v6,
                                               void** v7, void** v8, void** v9) {
  *projection = nullptr;
  for (void** value : {v2, v3, v4, v5, v6, v7, v8, v9}) *value = nullptr;
  const std::string& path = layer->record->path;
  if (!has(path, "map")) return 0;
  *projection = gks_Duplicate("UTM");
  if (has(path, "unsaid")) return -1;
  if (has(path, "unknown")) report("no such map");
  if (has(path, "unknown")) return -1;
  *v2 = gks_Duplicate("WGS 84");
  *v6 = gks_Duplicate("");
  *v9 = gks_Duplicate("0");
  return 0;
}
