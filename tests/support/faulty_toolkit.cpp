#include "support/faulty_toolkit.h"

#include <dlfcn.h>

#include <array>
#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string_view>
#include <utility>

#include "debug/debug_channel.h"
#include "gridkit/dictionary.h"
#include "gridkit/file.h"
#include "gridkit/instance.h"
#include "gridkit/layer.h"
#include "gridkit/map_projection.h"
#include "gridkit/memory.h"
#include "gridkit/preference.h"
#include "gridkit/string_list.h"
#include "gridkit/text.h"
#include "handlepool/handlepool.h"
#include "rmdllib/model_ephemeris.h"
#include "support/ledger.h"

namespace {

struct State {
  bool armed = false;
  std::string operation;
  long failing_call = 0;
  long calls = 0;
  int debug_texts = 0;
  Ledger ledger;
};
State& state() {
  static State all;
  return all;
}

// The operation that stands behind one of these. `declared` gives its type.
template <class Function>
Function* behind(const char* name, Function*) {
  void* found = ::dlsym(RTLD_NEXT, name);
  if (found == nullptr) std::abort();
  return reinterpret_cast<Function*>(found);
}

bool fails(std::string_view operation) {
  State& s = state();
  return s.armed && s.operation == operation && ++s.calls == s.failing_call;
}

bool failed(const char* operation, gke_Report** err) {
  if (!fails(operation)) return false;
  if (err != nullptr)
    *err = gke_CreateErrorReport(operation, 0, gke_SeverityError, *err, "made to fail", 0);
  return true;
}

template <class T>
T* lent(T* object, const char* kind, Ledger::End end) {
  if (state().armed && object != nullptr) state().ledger.lend(object, kind, end);
  return object;
}

void strike(void* object) {
  if (object != nullptr) state().ledger.strike(object);
}

}  // namespace

namespace faulty {

void arm(const std::string& operation, long failing_call) {
  state().operation = operation;
  state().failing_call = failing_call;
  state().calls = 0;
  state().debug_texts = 0;
  state().armed = true;
}
void disarm() {
  state().armed = false;
}
long calls() {
  return state().calls;
}
int debug_texts() {
  return state().debug_texts;
}
std::map<std::string, int> outstanding() {
  return state().ledger.outstanding();
}
void end_outstanding() {
  disarm();
  state().ledger.clear();
}

}  // namespace faulty

// --- Memory, texts and lists ---

void* gkm_HeapMalloc(size_t size) {
  static auto* const next = behind("gkm_HeapMalloc", &gkm_HeapMalloc);
  if (fails("gkm_HeapMalloc")) return nullptr;
  return lent(next(size), "block", &std::free);
}
void gkm_HeapFree(void* block) {
  static auto* const next = behind("gkm_HeapFree", &gkm_HeapFree);
  strike(block);
  next(block);
}
void* gkm_MemDup(const void* source, size_t size) {
  static auto* const next = behind("gkm_MemDup", &gkm_MemDup);
  return fails("gkm_MemDup") ? nullptr : next(source, size);
}
char* gks_Duplicate(const char* text) {
  static auto* const next = behind("gks_Duplicate", &gks_Duplicate);
  return fails("gks_Duplicate") ? nullptr : next(text);
}
char* gks_Sprintf(char* buffer, const char* format, gke_Report** err, ...) {
  static auto* const next = behind("gks_Sprintf", &gks_Sprintf);
  if (failed("gks_Sprintf", err)) return nullptr;
  std::array<char, 8192> text{};
  std::va_list arguments;
  va_start(arguments, err);
  std::vsnprintf(text.data(), text.size(), format, arguments);
  va_end(arguments);
  return next(buffer, "%s", err, text.data());
}
const char* gks_SubString(const char* text, const char* pattern) {
  static auto* const next = behind("gks_SubString", &gks_SubString);
  return fails("gks_SubString") ? nullptr : next(text, pattern);
}
int32_t gks_Eqnic(const char* a, const char* b, size_t length) {
  static auto* const next = behind("gks_Eqnic", &gks_Eqnic);
  return fails("gks_Eqnic") ? 0 : next(a, b, length);
}
int32_t gks_REComp(const char* pattern) {
  static auto* const next = behind("gks_REComp", &gks_REComp);
  return next(fails("gks_REComp") ? nullptr : pattern);
}
int32_t gks_REExec(const char* text) {
  static auto* const next = behind("gks_REExec", &gks_REExec);
  return fails("gks_REExec") ? 0 : next(text);
}
gks_StringList* gks_StringListAppend(gks_StringList* list, const char* text, gke_Report** err) {
  static auto* const next = behind("gks_StringListAppend", &gks_StringListAppend);
  return failed("gks_StringListAppend", err) ? list : next(list, text, err);
}
void gks_StringListDelete(gks_StringList* list, gke_Report** err) {
  static auto* const next = behind("gks_StringListDelete", &gks_StringListDelete);
  if (!failed("gks_StringListDelete", err)) next(list, err);
}
double gkp_GetNumberPreference(const char* group, const char* name, double value,
                               gke_Report** err) {
  static auto* const next = behind("gkp_GetNumberPreference", &gkp_GetNumberPreference);
  return failed("gkp_GetNumberPreference", err) ? value : next(group, name, value, err);
}
gki_Instance* gki_GetInit(gke_Report** err) {
  static auto* const next = behind("gki_GetInit", &gki_GetInit);
  return failed("gki_GetInit", err) ? nullptr : next(err);
}
void OutputDebugStringA(const char* text) {
  static auto* const next = behind("OutputDebugStringA", &OutputDebugStringA);
  if (text != nullptr && state().armed) ++state().debug_texts;
  next(text);
}

// --- Files and streams ---

int32_t gkf_FileExists(const char* path, gke_Report** err) {
  static auto* const next = behind("gkf_FileExists", &gkf_FileExists);
  return failed("gkf_FileExists", err) ? 0 : next(path, err);
}
gkf_File* gkf_Open(const char* path, const char* mode, gke_Report** err, int32_t reserved) {
  static auto* const next = behind("gkf_Open", &gkf_Open);
  if (failed("gkf_Open", err)) return nullptr;
  return lent(next(path, mode, err, reserved), "file",
              [](void* file) { gkf_Close(static_cast<gkf_File*>(file), nullptr); });
}
void gkf_Close(gkf_File* file, gke_Report** err) {
  static auto* const next = behind("gkf_Close", &gkf_Close);
  if (failed("gkf_Close", err)) return;
  strike(file);
  next(file, err);
}
void gkf_Fgets(char* buffer, int32_t size, gkf_File* file, gke_Report** err) {
  static auto* const next = behind("gkf_Fgets", &gkf_Fgets);
  if (!failed("gkf_Fgets", err)) next(buffer, size, file, err);
}
gkf_Stream* gkf_fopen(const char* path, const char* mode) {
  static auto* const next = behind("gkf_fopen", &gkf_fopen);
  if (fails("gkf_fopen")) return nullptr;
  return lent(next(path, mode), "stream",
              [](void* stream) { gkf_fclose(static_cast<gkf_Stream*>(stream)); });
}
// The handle is gone in any case.
int32_t gkf_fclose(gkf_Stream* stream) {
  static auto* const next = behind("gkf_fclose", &gkf_fclose);
  const bool fails_now = fails("gkf_fclose");
  strike(stream);
  return next(stream) != 0 || fails_now ? -1 : 0;
}
int32_t gkf_fseeko(gkf_Stream* stream, int64_t offset, int32_t origin) {
  static auto* const next = behind("gkf_fseeko", &gkf_fseeko);
  return fails("gkf_fseeko") ? -1 : next(stream, offset, origin);
}
size_t gkf_fread(void* buffer, size_t size, size_t count, gkf_Stream* stream) {
  static auto* const next = behind("gkf_fread", &gkf_fread);
  return fails("gkf_fread") ? 0 : next(buffer, size, count, stream);
}
int32_t gkf_feof(gkf_Stream* stream) {
  static auto* const next = behind("gkf_feof", &gkf_feof);
  return fails("gkf_feof") ? 0 : next(stream);
}

// --- Layers and maps ---

gks_StringList* gkl_LayerGetNames(const char* path, gki_Instance* token, gke_Report** err) {
  static auto* const next = behind("gkl_LayerGetNames", &gkl_LayerGetNames);
  return failed("gkl_LayerGetNames", err) ? nullptr : next(path, token, err);
}
gkl_Layer* gkl_LayerOpen(const char* name, gki_Instance* token, gke_Report** err, ...) {
  static auto* const next = behind("gkl_LayerOpen", &gkl_LayerOpen);
  if (failed("gkl_LayerOpen", err)) return nullptr;
  return lent(next(name, token, err, gkl_OptionReadOnly, 0), "layer",
              [](void* layer) { gkl_LayerClose(static_cast<gkl_Layer*>(layer), nullptr); });
}
void gkl_LayerClose(gkl_Layer* layer, gke_Report** err) {
  static auto* const next = behind("gkl_LayerClose", &gkl_LayerClose);
  if (failed("gkl_LayerClose", err)) return;
  strike(layer);
  next(layer, err);
}
gkl_PixelRect* gkl_PixelRectCreate(int32_t width, int32_t height, int32_t type, gke_Report** err) {
  static auto* const next = behind("gkl_PixelRectCreate", &gkl_PixelRectCreate);
  if (failed("gkl_PixelRectCreate", err)) return nullptr;
  // Its pixels are a block of the heap, on the account already.
  return lent(next(width, height, type, err), "rectangle",
              [](void* rect) { delete static_cast<gkl_PixelRect*>(rect); });
}
void gkl_PixelRectDelete(gkl_PixelRect* rect, gke_Report** err) {
  static auto* const next = behind("gkl_PixelRectDelete", &gkl_PixelRectDelete);
  strike(rect);
  next(rect, err);
  failed("gkl_PixelRectDelete", err);
}
void gkl_LayerRead(gkl_Layer* layer, int32_t column, int32_t line, int32_t width, int32_t height,
                   gkl_PixelRect* rect, gke_Report** err) {
  static auto* const next = behind("gkl_LayerRead", &gkl_LayerRead);
  if (!failed("gkl_LayerRead", err)) next(layer, column, line, width, height, rect, err);
}
gkj_MapInfo* gkl_MapInfoRead(gkl_Layer* layer, int32_t reserved, gke_Report** err) {
  static auto* const next = behind("gkl_MapInfoRead", &gkl_MapInfoRead);
  return failed("gkl_MapInfoRead", err) ? nullptr : next(layer, reserved, err);
}
void gkl_LayerMapProjectionRead(gkl_Layer* layer, gkj_Projection** projection, gke_Report** err) {
  static auto* const next = behind("gkl_LayerMapProjectionRead", &gkl_LayerMapProjectionRead);
  if (!failed("gkl_LayerMapProjectionRead", err)) next(layer, projection, err);
}
void gkj_ProjectionConvertToMIF(const gkj_Projection* projection, char** name, gkj_MifValue* v2,
                                gkj_MifValue* v3, gkj_MifValue* v4, gkj_MifValue* v5,
                                gkj_MifValue* v6, gkj_MifValue* v7, gkj_MifValue* v8,
                                gkj_MifValue* v9, gke_Report** err) {
  static auto* const next = behind("gkj_ProjectionConvertToMIF", &gkj_ProjectionConvertToMIF);
  if (failed("gkj_ProjectionConvertToMIF", err)) return;
  next(projection, name, v2, v3, v4, v5, v6, v7, v8, v9, err);
}

// --- Dictionaries, the orbit model, the registry ---

gkd_Dictionary* gkd_DictionaryCreate(gke_Report** err) {
  static auto* const next = behind("gkd_DictionaryCreate", &gkd_DictionaryCreate);
  return failed("gkd_DictionaryCreate", err) ? nullptr : next(err);
}
void gkd_DictionaryAddDesign(gkd_Dictionary* dictionary, gkd_Design* design, gke_Report** err) {
  static auto* const next = behind("gkd_DictionaryAddDesign", &gkd_DictionaryAddDesign);
  if (!failed("gkd_DictionaryAddDesign", err)) next(dictionary, design, err);
}
char* gkd_DictionaryEncodeToString(const gkd_Dictionary* dictionary, gke_Report** err) {
  static auto* const next = behind("gkd_DictionaryEncodeToString", &gkd_DictionaryEncodeToString);
  return failed("gkd_DictionaryEncodeToString", err) ? nullptr : next(dictionary, err);
}
int32_t gkd_ObjectSize(const void* object, const gkd_Design* design, gke_Report** err) {
  static auto* const next = behind("gkd_ObjectSize", &gkd_ObjectSize);
  return failed("gkd_ObjectSize", err) ? -1 : next(object, design, err);
}
void gkd_ConvertToMIF(int32_t reserved, const void* object, const gkd_Design* design, void* buffer,
                      gke_Report** err) {
  static auto* const next = behind("gkd_ConvertToMIF", &gkd_ConvertToMIF);
  if (!failed("gkd_ConvertToMIF", err)) next(reserved, object, design, buffer, err);
}
void rmdl_modelEphemeris(RadarGenericModel* model, gke_Report** err) {
  static auto* const next = behind("rmdl_modelEphemeris", &rmdl_modelEphemeris);
  if (!failed("rmdl_modelEphemeris", err)) next(model, err);
}
void* pool_FindFileHandleIfOpen(const char* name, int32_t reserved) {
  static auto* const next = behind("pool_FindFileHandleIfOpen", &pool_FindFileHandleIfOpen);
  return fails("pool_FindFileHandleIfOpen") ? nullptr : next(name, reserved);
}
int32_t pool_AddFileHandleToList(void* handle, const char* name, pool_ReleaseCallback release) {
  static auto* const next = behind("pool_AddFileHandleToList", &pool_AddFileHandleToList);
  return fails("pool_AddFileHandleToList") ? -1 : next(handle, name, release);
}

// A variable list can only be passed on word by word: the arguments are ints and addresses, each of
// which takes one word, and words after the end of the list are not looked at.
namespace {

constexpr std::size_t most_words = 200;
using Words = std::array<std::uintptr_t, most_words>;

template <std::size_t... i>
gkd_Design* pass_on(decltype(&gkd_DesignCreate) next, gkd_Dictionary* dictionary, const char* name,
                    gke_Report** err, const Words& words, std::index_sequence<i...>) {
  return next(dictionary, name, err, words[i]...);
}

Words words_of(std::va_list& arguments) {
  Words words{};
  std::size_t count = 0;
  const auto next_text = [&] {
    const char* text = va_arg(arguments, const char*);
    words.at(count++) = reinterpret_cast<std::uintptr_t>(text);
    return text;
  };
  while (const int code = va_arg(arguments, int)) {
    words.at(count++) = static_cast<std::uintptr_t>(code);
    next_text();
    if (code == gkd_DoubleArray) {
      words.at(count++) = static_cast<std::uintptr_t>(va_arg(arguments, int));
    }
    while (code == gkd_Enumeration && next_text() != nullptr) continue;
  }
  return words;
}

}  // namespace

gkd_Design* gkd_DesignCreate(gkd_Dictionary* dictionary, const char* name, gke_Report** err, ...) {
  static auto* const next = behind("gkd_DesignCreate", &gkd_DesignCreate);
  if (failed("gkd_DesignCreate", err)) return nullptr;
  std::va_list arguments;
  va_start(arguments, err);
  const Words words = words_of(arguments);
  va_end(arguments);
  return pass_on(next, dictionary, name, err, words, std::make_index_sequence<most_words>());
}
