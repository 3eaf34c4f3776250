#include "plugin/identify.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <memory>

#include "gridkit/file.h"
#include "gridkit/memory.h"
#include "gridkit/preference.h"
#include "gridkit/text.h"
#include "plugin/recognition_texts.h"
#include "plugin/schema_version.h"
#include "record/report_frame.h"

namespace {

constexpr std::size_t line_bytes = 256;
constexpr std::int32_t read_size = 255;

struct HeapDeleter {
  void operator()(char* block) const { gkm_HeapFree(block); }
};
using HeapText = std::unique_ptr<char, HeapDeleter>;

// A buffer for lines, whose last byte is 0; null without memory.
char* allocate_line() {
  char* const line = static_cast<char*>(gkm_HeapMalloc(line_bytes));
  if (line != nullptr) line[line_bytes - 1] = '\0';
  return line;
}

// Reads a line; false, and the failure reported, when there is none.
bool read_line(gkf_File* file, char* line, ReportFrame& frame, const char* message) {
  gkf_Fgets(line, read_size, file, frame.slot());
  return !frame.failed(message);
}

bool contains(const char* line, const char* pattern) {
  return gks_SubString(line, pattern) != nullptr;
}

// By the fourth line. The preference is asked for only where it matters.
bool is_of_known_mission(const char* line, ReportFrame& frame) {
  if (contains(line, mission_text)) return true;
  bool is_sister = false;
  for (const char* const mission : sister_mission_texts) {
    if (contains(line, mission)) is_sister = true;
  }
  return is_sister && gkp_GetNumberPreference("tsx", "sister_satellites", 0, frame.slot()) != 0;
}

// All texts are sought first, and each that occurs overwrites the index with its own number.
void find_version(const char* line, std::int32_t* versionIndex) {
  for (std::int32_t index = 0; index < schema_text_none; ++index) {
    if (contains(line, schema_version_texts[index])) *versionIndex = index;
  }
}

bool recognise(gkf_File* file, char* line, std::int32_t* versionIndex, ReportFrame& frame) {
  constexpr const char* early = "gkf_Fgets failure in tsx_FileIdentify";
  // Kept on purpose: the words name a call that is not made.
  constexpr const char* late = "gkf_ReadDirect failure in tsx_FileIdentify";
  constexpr const char* foreign = "This is not a TerraSAR-X file.";
  if (!read_line(file, line, frame, early) || !read_line(file, line, frame, early)) return false;
  if (!read_line(file, line, frame, late)) return false;
  if (!contains(line, product_level_text)) {
    frame.report(foreign);
    return false;
  }
  if (!read_line(file, line, frame, late)) return false;
  if (!is_of_known_mission(line, frame)) {
    frame.report(foreign);
    return false;
  }
  for (int i = 0; i < 3; ++i) {
    if (!read_line(file, line, frame, late)) return false;
  }
  find_version(line, versionIndex);
  return true;
}

}  // namespace

std::int32_t tsx_FileIdentify(const char* path, std::int32_t* versionIndex) {
  static const char* const function_word = "tsx_FileIdentify";
  ReportFrame frame(function_word);
  const HeapText line(allocate_line());
  const HeapText name(gks_Sprintf(nullptr, "%s", frame.slot(), path));
  // Without memory for either the file is none of ours.
  if (line == nullptr || name == nullptr || gkf_FileExists(name.get(), frame.slot()) != 1) {
    frame.drop();
    return -1;
  }
  gkf_File* file = gkf_Open(name.get(), "r", frame.slot(), 0);
  const bool opened = !frame.failed("gkf_Open fail") && file != nullptr;
  const bool recognised = opened && recognise(file, line.get(), versionIndex, frame);
  frame.drop();
  gkf_Close(file, frame.slot());
  if (frame.pending()) frame.report("gkf_Close failed", gke_SeverityWarning);
  return recognised ? 0 : -1;
}
