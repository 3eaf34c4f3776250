#include "support/fake_toolkit.h"

#include <gtest/gtest.h>
#include <regex.h>
#include <strings.h>

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <memory>
#include <optional>
#include <ostream>
#include <utility>

#include "debug/debug_channel.h"
#include "gridkit/instance.h"
#include "gridkit/memory.h"
#include "gridkit/preference.h"
#include "gridkit/string_list.h"
#include "gridkit/text.h"
#include "handlepool/handlepool.h"
#include "plugin/document.h"
#include "support/fake_parts.h"

struct gke_Report {
  PrintedReport content;
  gke_Report* previous;
};
struct gkl_Layer {
  std::string name;
};
struct gki_Instance {};

namespace {

struct PoolEntry {
  std::string name;
  void* handle;
  pool_ReleaseCallback release;
};

std::unique_ptr<FakeToolkit> current = std::make_unique<FakeToolkit>();
std::vector<PoolEntry> pool;
std::optional<std::string> pattern;
gki_Instance instance;

int disabled = 0;  // counted before the program's own initialisation may have run

}  // namespace

namespace fake {

Ledger& ledger() {
  static Ledger all;
  return all;
}

void take_back(void* object) {
  if (!ledger().end(object)) ADD_FAILURE() << "given back twice, or never handed out";
}

void* new_block(size_t size, const char* kind) {
  ++toolkit().live_blocks;
  // Filled, so that nothing passes for cleared that is not.
  const size_t bytes = size == 0 ? 1 : size;
  void* block = std::memset(std::malloc(bytes), 0xA5, bytes);
  ledger().lend(block, kind, &std::free);
  return block;
}

char* new_text(const char* text, const char* kind) {
  return std::strcpy(static_cast<char*>(new_block(std::strlen(text) + 1, kind)), text);
}

bool fails(const char* operation) {
  FakeToolkit& t = toolkit();
  const int number = ++t.calls[operation];
  const auto at = t.fail_at.find(operation);
  if (at == t.fail_at.end()) return false;
  const auto until = t.fail_until.find(operation);
  return number >= at->second &&
         number <= (until == t.fail_until.end() ? at->second : until->second);
}

static gke_Report* new_report(PrintedReport content, gke_Report* previous) {
  ++toolkit().live_reports;
  return lend(new gke_Report{std::move(content), previous}, "report");
}

void report(const char* operation, gke_Report** err, const char* message) {
  if (err != nullptr) *err = new_report({operation, message, gke_SeverityError}, *err);
}

bool failed(const char* operation, gke_Report** err) {
  if (!fails(operation)) return false;
  if (!toolkit().silent.contains(operation)) report(operation, err, "made to fail");
  return true;
}

}  // namespace fake

using namespace fake;

std::ostream& operator<<(std::ostream& out, const PrintedReport& r) {
  return out << r.word << ": " << r.message << " (" << r.severity << ')';
}

std::vector<std::string> FakeToolkit::messages() const {
  std::vector<std::string> texts;
  for (const PrintedReport& r : printed) texts.push_back(r.message);
  return texts;
}

int library_calls_disabled() {
  return disabled;
}

FakeToolkit& toolkit() {
  return *current;
}

std::map<std::string, int> outstanding() {
  return ledger().outstanding();
}

void reset_toolkit() {
  ledger().clear();
  current = std::make_unique<FakeToolkit>();
  pool.clear();
  pattern.reset();
}

// --- Memory and texts ---

void* gkm_HeapMalloc(size_t size) {
  toolkit().allocations.push_back(size);
  if (fails("gkm_HeapMalloc") || (size == 0 && toolkit().nothing_for_no_bytes)) return nullptr;
  return new_block(size, "block");
}
void gkm_HeapFree(void* block) {
  if (block == nullptr) return;
  --toolkit().live_blocks;
  toolkit().freed.push_back(block);
  take_back(block);
}
void* gkm_MemDup(const void* source, size_t size) {
  if (fails("gkm_MemDup")) return nullptr;
  return std::memcpy(new_block(size, "block"), source, size);
}
void gkm_MemCpy(void* target, const void* source, size_t bytes) {
  if (bytes > 0) std::memcpy(target, source, bytes);
}
void gkm_MemSwab(void* buffer, size_t count, size_t) {
  auto* bytes = static_cast<char*>(buffer);
  for (size_t i = 0; i < count; ++i) std::swap(bytes[2 * i], bytes[2 * i + 1]);
}
char* gks_Duplicate(const char* text) {
  if (fails("gks_Duplicate")) return nullptr;
  return new_text(text);
}
char* gks_Sprintf(char* buffer, const char* format, gke_Report** err, ...) {
  toolkit().formats.emplace_back(format);
  if (failed("gks_Sprintf", err)) return nullptr;
  std::va_list arguments;
  va_start(arguments, err);
  char text[8192];
  std::vsnprintf(text, sizeof text, format, arguments);
  va_end(arguments);
  return buffer != nullptr ? std::strcpy(buffer, text) : new_text(text);
}
const char* gks_SubString(const char* text, const char* sought) {
  return fails("gks_SubString") ? nullptr : std::strstr(text, sought);
}
void gks_GetPathPart(const char* path, char* buffer, size_t size) {
  const std::string text = path;
  const std::string directory = text.substr(0, text.rfind('/') + 1);
  std::snprintf(buffer, size, "%s", directory.c_str());
}
int32_t gks_Eqnic(const char* a, const char* b, size_t length) {
  return !fails("gks_Eqnic") && a != nullptr && b != nullptr && strncasecmp(a, b, length) == 0 ? 1
                                                                                               : 0;
}
int32_t gkt_Text_strcmp(const char* a, const char* b) {
  return std::strcmp(a, b);
}
size_t gkt_Text_strlen(const char* text) {
  return std::strlen(text);
}
const char* gkt_Text_strrchr(const char* text, int32_t c) {
  return std::strrchr(text, c);
}
int32_t gkt_Text_atol(const char* text) {
  return static_cast<int32_t>(std::atol(text));
}
int32_t gks_REComp(const char* text) {
  pattern.reset();
  if (fails("gks_REComp")) return -1;
  pattern = text;
  return 0;
}
int32_t gks_REExec(const char* text) {
  regex_t compiled;
  if (fails("gks_REExec") || !pattern) return 0;
  if (regcomp(&compiled, pattern->c_str(), REG_EXTENDED | REG_NOSUB) != 0) return 0;
  const int answer = regexec(&compiled, text, 0, nullptr, 0);
  regfree(&compiled);
  return answer == 0 ? 1 : 0;
}

// --- Reports ---

gke_Report* gke_CreateErrorReport(const char* word, int32_t, int32_t severity, gke_Report* previous,
                                  const char* message, int32_t) {
  toolkit().created.push_back({word, message, severity});
  return new_report({word, message, severity}, previous);
}
void gke_PrintErrorReport(const gke_Report* chain, int32_t, int32_t) {
  for (; chain != nullptr; chain = chain->previous) toolkit().printed.push_back(chain->content);
}
void gke_DeleteErrorReportEx(gke_Report** chain) {
  while (*chain != nullptr) {
    gke_Report* next = (*chain)->previous;
    take_back(*chain);
    --toolkit().live_reports;
    *chain = next;
  }
}

// --- Lists and preferences ---

static gks_StringList* append(gks_StringList* list, const char* text) {
  if (list == nullptr) list = lend(new gks_StringList{0, nullptr}, "list");
  const auto count = static_cast<size_t>(list->count);
  auto** strings = static_cast<char**>(new_block((count + 1) * sizeof(char*), "entry"));
  std::copy_n(list->strings, count, strings);
  strings[count] = new_text(text, "entry");
  gkm_HeapFree(list->strings);
  list->strings = strings;
  ++list->count;
  return list;
}
gks_StringList* gks_StringListAppend(gks_StringList* list, const char* text, gke_Report** err) {
  return failed("gks_StringListAppend", err) ? list : append(list, text);
}
void gks_StringListDelete(gks_StringList* list, gke_Report** err) {
  const bool is_empty = list == nullptr || list->count == 0;
  toolkit().log.push_back(std::string("gks_StringListDelete ") +
                          (is_empty ? "" : list->strings[0]));
  if (failed("gks_StringListDelete", err) || list == nullptr) return;
  for (int32_t i = 0; i < list->count; ++i) gkm_HeapFree(list->strings[i]);
  gkm_HeapFree(list->strings);
  take_back(list);
}
double gkp_GetNumberPreference(const char* group, const char* name, double value,
                               gke_Report** err) {
  failed("gkp_GetNumberPreference", err);
  const auto found = toolkit().preferences.find(std::string(group) + '.' + name);
  return found == toolkit().preferences.end() ? value : found->second;
}

// --- Layers ---

gki_Instance* gki_GetInit(gke_Report** err) {
  return failed("gki_GetInit", err) ? nullptr : &instance;
}
gks_StringList* gkl_LayerGetNames(const char* path, gki_Instance* token, gke_Report** err) {
  toolkit().log.push_back(std::string("gkl_LayerGetNames ") + (path != nullptr ? path : "(null)"));
  if (failed("gkl_LayerGetNames", err)) return nullptr;
  if (path == nullptr || token == nullptr) {
    report("gkl_LayerGetNames", err, path == nullptr ? "no path" : "no token");
    return nullptr;
  }
  if (toolkit().files_without_layers) return lend(new gks_StringList{0, nullptr}, "list");
  return append(append(nullptr, path), "a second layer");
}
gkl_Layer* gkl_LayerOpen(const char* name, gki_Instance*, gke_Report** err, ...) {
  std::va_list options;
  va_start(options, err);
  const int option = va_arg(options, int);
  const int end = va_arg(options, int);
  va_end(options);
  toolkit().log.push_back(std::string("gkl_LayerOpen ") + (name != nullptr ? name : "(null)") +
                          ' ' + std::to_string(option) + ' ' + std::to_string(end));
  if (failed("gkl_LayerOpen", err)) return nullptr;
  if (name == nullptr) {
    report("gkl_LayerOpen", err, "no name");
    return nullptr;
  }
  return lend(new gkl_Layer{name}, "layer");
}
void gkl_LayerClose(gkl_Layer* layer, gke_Report** err) {
  toolkit().log.emplace_back("gkl_LayerClose");
  if (failed("gkl_LayerClose", err) || layer == nullptr) return;
  take_back(layer);
}
gkl_PixelRect* gkl_PixelRectCreate(int32_t width, int32_t height, int32_t type, gke_Report** err) {
  toolkit().log.push_back("gkl_PixelRectCreate " + std::to_string(width) + ' ' +
                          std::to_string(height) + ' ' + std::to_string(type));
  if (failed("gkl_PixelRectCreate", err)) return nullptr;
  if (width < 1 || height < 1) {
    report("gkl_PixelRectCreate", err, "no pixels");
    return nullptr;
  }
  // Pixels 16 bytes apart and lines wider than needed: strides are to be used.
  const int64_t row = 16 * int64_t{width} + 32;
  void* data = std::calloc(static_cast<size_t>(height), static_cast<size_t>(row));
  ledger().lend(data, "pixels", &std::free);
  return lend(new gkl_PixelRect{data, row, 16, width, height, type}, "rectangle");
}
void gkl_PixelRectDelete(gkl_PixelRect* rect, gke_Report** err) {
  take_back(rect->data);
  take_back(rect);
  failed("gkl_PixelRectDelete", err);
}
void gkl_LayerRead(gkl_Layer* layer, int32_t column, int32_t line, int32_t width, int32_t height,
                   gkl_PixelRect* rect, gke_Report** err) {
  toolkit().log.push_back("gkl_LayerRead " + std::to_string(column) + ' ' + std::to_string(line) +
                          ' ' + std::to_string(width) + ' ' + std::to_string(height));
  if (failed("gkl_LayerRead", err)) return;
  if (layer == nullptr) return report("gkl_LayerRead", err, "no layer");
  for (int32_t i = 0; i < width * height; ++i) {
    const double value = toolkit().pixels[static_cast<size_t>(i) % toolkit().pixels.size()];
    std::memcpy(static_cast<char*>(rect->data) + rect->rowStride * (i / width) +
                    rect->columnStride * (i % width),
                &value, sizeof value);
  }
}

// --- Registry and debug channel ---

// The newest entry of a name comes first, as in the host's own registry.
static std::vector<PoolEntry>::reverse_iterator newest(const char* name) {
  return std::find_if(pool.rbegin(), pool.rend(), [&](const PoolEntry& entry) {
    return name != nullptr && entry.name == name;
  });
}
void* pool_FindFileHandleIfOpen(const char* name, int32_t) {
  if (fails("pool_FindFileHandleIfOpen")) return nullptr;
  const auto found = newest(name);
  return found == pool.rend() ? nullptr : found->handle;
}
int32_t pool_AddFileHandleToList(void* handle, const char* name, pool_ReleaseCallback release) {
  if (fails("pool_AddFileHandleToList")) return -1;
  pool.push_back({name, handle, release});
  return 0;
}
void pool_RemoveFileHandleFromList(const char* name, int32_t) {
  const auto found = newest(name);
  if (found == pool.rend()) return;
  const PoolEntry removed = *found;
  pool.erase(std::next(found).base());
  removed.release(removed.handle);
}
void OutputDebugStringA(const char* text) {
  toolkit().debug.emplace_back(text == nullptr ? "(null)" : text);
}
int32_t DisableThreadLibraryCalls(void*) {
  ++disabled;
  return 1;
}

// --- The document ---

level1bProductBase* tsx_ConstructDocument(std::int32_t versionIndex, const char*,
                                          lmx::elmx_error* error) {
  toolkit().constructed.push_back(versionIndex);
  toolkit().error_at_entry = *error;
  if (versionIndex > 5) return nullptr;
  *error = toolkit().document_error;
  if (toolkit().make_document) return toolkit().make_document();
  return std::exchange(toolkit().document, nullptr);
}
