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

struct gke_Report {
  PrintedReport content;
  gke_Report* previous;
};
struct gkf_File {
  std::string path;
  std::size_t position = 0;
};
struct gkf_Stream {
  std::string path;
  std::size_t position = 0;
  bool at_end = false;
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
std::string pattern;
gki_Instance instance;

// What was handed out and has not come back, with what ends it. What the plug-in loses on purpose
// ends with the next reset; what comes back twice, or was never handed out, fails the test.
class Ledger {
 public:
  Ledger() = default;
  Ledger(const Ledger&) = delete;
  Ledger& operator=(const Ledger&) = delete;
  ~Ledger() { clear(); }
  void* lend_block(void* block) {
    lent_[block] = &std::free;
    return block;
  }
  template <class T>
  T* lend(T* object) {
    lent_[object] = [](void* ended) { delete static_cast<T*>(ended); };
    return object;
  }
  void take_back(void* object) {
    const auto found = lent_.find(object);
    if (found == lent_.end()) {
      ADD_FAILURE() << "given back twice, or never handed out";
      return;
    }
    found->second(object);
    lent_.erase(found);
  }
  void clear() {
    for (const auto& [object, end] : lent_) end(object);
    lent_.clear();
  }

 private:
  std::map<void*, void (*)(void*)> lent_;
};
Ledger ledger;
int disabled = 0;  // counted before the program's own initialisation may have run

gke_Report* new_report(PrintedReport content, gke_Report* previous) {
  ++toolkit().live_reports;
  return ledger.lend(new gke_Report{std::move(content), previous});
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

void report(const char* operation, gke_Report** err, const char* message) {
  if (err != nullptr) *err = new_report({operation, message, 2}, *err);
}

}  // namespace

void* new_block(size_t size) {
  ++toolkit().live_blocks;
  // Filled, so that nothing passes for cleared that is not.
  const size_t bytes = size == 0 ? 1 : size;
  return ledger.lend_block(std::memset(std::malloc(bytes), 0xA5, bytes));
}

char* new_text(const char* text) {
  return std::strcpy(static_cast<char*>(new_block(std::strlen(text) + 1)), text);
}

bool failed(const char* operation, gke_Report** err) {
  if (!fails(operation)) return false;
  const bool told = err != nullptr && !toolkit().silent.contains(operation);
  if (told) *err = new_report({operation, "made to fail", 2}, *err);
  return true;
}

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

void reset_toolkit() {
  ledger.clear();
  current = std::make_unique<FakeToolkit>();
  pool.clear();
  pattern.clear();
}

// --- Memory and texts ---

void* gkm_HeapMalloc(size_t size) {
  if (fails("gkm_HeapMalloc")) return nullptr;
  return new_block(size);
}
void gkm_HeapFree(void* block) {
  if (block == nullptr) return;
  --toolkit().live_blocks;
  toolkit().freed.push_back(block);
  ledger.take_back(block);
}
void* gkm_MemDup(const void* source, size_t size) {
  if (fails("gkm_MemDup")) return nullptr;
  return std::memcpy(new_block(size), source, size);
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
  if (failed("gks_Sprintf", err)) return nullptr;
  std::va_list arguments;
  va_start(arguments, err);
  char text[8192];
  std::vsnprintf(text, sizeof text, format, arguments);
  va_end(arguments);
  return buffer != nullptr ? std::strcpy(buffer, text) : new_text(text);
}
const char* gks_SubString(const char* text, const char* sought) {
  return std::strstr(text, sought);
}
void gks_GetPathPart(const char* path, char* buffer, size_t size) {
  const std::string text = path;
  const std::string directory = text.substr(0, text.rfind('/') + 1);
  std::snprintf(buffer, size, "%s", directory.c_str());
}
int32_t gks_Eqnic(const char* a, const char* b, size_t length) {
  return a != nullptr && b != nullptr && strncasecmp(a, b, length) == 0 ? 1 : 0;
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
  pattern = text;
  return 0;
}
int32_t gks_REExec(const char* text) {
  regex_t compiled;
  if (regcomp(&compiled, pattern.c_str(), REG_EXTENDED | REG_NOSUB) != 0) return 0;
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
    ledger.take_back(*chain);
    --toolkit().live_reports;
    *chain = next;
  }
}

// --- Files and streams ---

int32_t gkf_FileExists(const char* path, gke_Report** err) {
  if (failed("gkf_FileExists", err)) return 0;
  const auto told = toolkit().exists.find(path);
  if (told != toolkit().exists.end()) return told->second;
  return toolkit().files.contains(path) ? 1 : 0;
}
gkf_File* gkf_Open(const char* path, const char* mode, gke_Report** err, int32_t) {
  toolkit().modes.emplace_back(mode);
  if (failed("gkf_Open", err)) return nullptr;
  return ledger.lend(new gkf_File{path});
}
void gkf_Close(gkf_File* file, gke_Report** err) {
  toolkit().log.emplace_back("gkf_Close");
  if (failed("gkf_Close", err) || file == nullptr) return;
  ledger.take_back(file);
}
void gkf_Fgets(char* buffer, int32_t size, gkf_File* file, gke_Report** err) {
  if (failed("gkf_Fgets", err)) return;
  const std::string& bytes = toolkit().files[file->path];
  if (file->position >= bytes.size()) {
    report("gkf_Fgets", err, "the end");
    return;
  }
  const auto end = std::min(bytes.find('\n', file->position), bytes.size() - 1) + 1;
  const auto count =
      std::min<std::size_t>(end - file->position, static_cast<std::size_t>(size - 1));
  std::snprintf(buffer, count + 1, "%s", bytes.c_str() + file->position);
  file->position += count;
}
gkf_Stream* gkf_fopen(const char* path, const char* mode) {
  toolkit().log.push_back(std::string("gkf_fopen ") + (path != nullptr ? path : "(null)") + ' ' +
                          mode);
  if (fails("gkf_fopen") || path == nullptr || !toolkit().files.contains(path)) return nullptr;
  return ledger.lend(new gkf_Stream{path});
}
int32_t gkf_fclose(gkf_Stream* stream) {
  toolkit().log.emplace_back("gkf_fclose");
  if (fails("gkf_fclose") || stream == nullptr) return -1;
  ledger.take_back(stream);
  return 0;
}
int32_t gkf_fseeko(gkf_Stream* stream, int64_t offset, int32_t) {
  toolkit().seeks.push_back(offset);
  if (fails("gkf_fseeko") || stream == nullptr) return -1;
  stream->position = static_cast<std::size_t>(offset);
  stream->at_end = false;
  return 0;
}
size_t gkf_fread(void* buffer, size_t size, size_t count, gkf_Stream* stream) {
  if (toolkit().endless) {
    std::memset(buffer, 0, size * count);
    return count;
  }
  const std::string& bytes = toolkit().files[stream->path];
  const std::size_t left = bytes.size() - std::min(stream->position, bytes.size());
  std::size_t items = std::min(count, left / size);
  stream->at_end = items < count;
  const auto most = toolkit().short_reads_of;
  if (most >= 0 && toolkit().calls["gkf_fread"]++ > 0) {
    items = std::min(items, static_cast<std::size_t>(most));
    stream->at_end = false;
  }
  std::memcpy(buffer, bytes.data() + std::min(stream->position, bytes.size()), items * size);
  stream->position += items * size;
  return items;
}
int32_t gkf_feof(gkf_Stream* stream) {
  return stream->at_end ? 1 : 0;
}

// --- Lists and preferences ---

gks_StringList* gks_StringListAppend(gks_StringList* list, const char* text, gke_Report** err) {
  if (failed("gks_StringListAppend", err)) return list;
  if (list == nullptr) list = ledger.lend(new gks_StringList{0, nullptr});
  const auto count = static_cast<size_t>(list->count);
  auto** strings = static_cast<char**>(new_block((count + 1) * sizeof(char*)));
  std::copy_n(list->strings, count, strings);
  strings[count] = new_text(text);
  gkm_HeapFree(list->strings);
  list->strings = strings;
  ++list->count;
  return list;
}
void gks_StringListDelete(gks_StringList* list, gke_Report** err) {
  const bool is_empty = list == nullptr || list->count == 0;
  toolkit().log.push_back(std::string("gks_StringListDelete ") +
                          (is_empty ? "" : list->strings[0]));
  if (failed("gks_StringListDelete", err) || list == nullptr) return;
  for (int32_t i = 0; i < list->count; ++i) gkm_HeapFree(list->strings[i]);
  gkm_HeapFree(list->strings);
  ledger.take_back(list);
}
double gkp_GetNumberPreference(const char* group, const char* name, double value,
                               gke_Report** err) {
  failed("gkp_GetNumberPreference", err);
  const auto found = toolkit().preferences.find(std::string(group) + '.' + name);
  return found == toolkit().preferences.end() ? value : found->second;
}

// --- Layers ---

gki_Instance* gki_GetInit(gke_Report**) {
  return &instance;
}
gks_StringList* gkl_LayerGetNames(const char* path, gki_Instance*, gke_Report** err) {
  toolkit().log.push_back(std::string("gkl_LayerGetNames ") + (path != nullptr ? path : "(null)"));
  if (failed("gkl_LayerGetNames", err)) return nullptr;
  if (path == nullptr) {
    report("gkl_LayerGetNames", err, "no path");
    return nullptr;
  }
  gks_StringList* names = gks_StringListAppend(nullptr, path, nullptr);
  return gks_StringListAppend(names, "a second layer", nullptr);
}
gkl_Layer* gkl_LayerOpen(const char* name, gki_Instance*, gke_Report** err, ...) {
  std::va_list options;
  va_start(options, err);
  const int option = va_arg(options, int);
  const int end = va_arg(options, int);
  va_end(options);
  toolkit().log.push_back(std::string("gkl_LayerOpen ") + name + ' ' + std::to_string(option) +
                          ' ' + std::to_string(end));
  if (failed("gkl_LayerOpen", err)) return nullptr;
  return ledger.lend(new gkl_Layer{name});
}
void gkl_LayerClose(gkl_Layer* layer, gke_Report** err) {
  toolkit().log.emplace_back("gkl_LayerClose");
  if (failed("gkl_LayerClose", err) || layer == nullptr) return;
  ledger.take_back(layer);
}
gkl_PixelRect* gkl_PixelRectCreate(int32_t width, int32_t height, int32_t type, gke_Report** err) {
  toolkit().log.push_back("gkl_PixelRectCreate " + std::to_string(width) + ' ' +
                          std::to_string(height) + ' ' + std::to_string(type));
  if (failed("gkl_PixelRectCreate", err)) return nullptr;
  // Pixels 16 bytes apart and lines wider than needed: strides are to be used.
  const int64_t row = 16 * int64_t{width} + 32;
  void* data = std::calloc(static_cast<size_t>(height), static_cast<size_t>(row));
  return ledger.lend(new gkl_PixelRect{ledger.lend_block(data), row, 16, width, height, type});
}
void gkl_PixelRectDelete(gkl_PixelRect* rect, gke_Report** err) {
  ledger.take_back(rect->data);
  ledger.take_back(rect);
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

void* pool_FindFileHandleIfOpen(const char* name, int32_t) {
  for (const PoolEntry& entry : pool) {
    if (entry.name == name) return entry.handle;
  }
  return nullptr;
}
int32_t pool_AddFileHandleToList(void* handle, const char* name, pool_ReleaseCallback release) {
  pool.push_back({name, handle, release});
  return 0;
}
void pool_RemoveFileHandleFromList(const char* name, int32_t) {
  for (auto entry = pool.begin(); name != nullptr && entry != pool.end(); ++entry) {
    if (entry->name != name) continue;
    const PoolEntry removed = *entry;
    pool.erase(entry);
    removed.release(removed.handle);
    return;
  }
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
  return std::exchange(toolkit().document, nullptr);
}
