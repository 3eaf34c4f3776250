#include "plugin/identify.h"

#include <array>
#include <cstddef>

#include "gridkit/file.h"
#include "gridkit/memory.h"
#include "gridkit/text.h"
#include "plugin/recognition_texts.h"
#include "plugin/schema_version.h"
#include "record/report_frame.h"

namespace {

constexpr std::int32_t read_size = 255;
using Line = std::array<char, 256>;

// Reads a line; false, and the failure reported, when there is none.
bool read_line(gkf_File* file, Line& line, ReportFrame& frame, const char* message) {
  gkf_Fgets(line.data(), read_size, file, frame.slot());
  return !frame.failed(message);
}

bool contains(const Line& line, const char* pattern) {
  return gks_SubString(line.data(), pattern) != nullptr;
}

// All texts are sought first, and each that occurs overwrites the index with its own number.
void find_version(const Line& line, std::int32_t* versionIndex) {
  for (std::int32_t index = 0; index < schema_text_none; ++index) {
    if (contains(line, schema_version_texts[index])) *versionIndex = index;
  }
}

bool recognise(gkf_File* file, std::int32_t* versionIndex, ReportFrame& frame) {
  constexpr const char* early = "gkf_Fgets failure in tsx_FileIdentify";
  // The word is older than the call it stands for.
  constexpr const char* late = "gkf_ReadDirect failure in tsx_FileIdentify";
  constexpr const char* foreign = "This is not a TerraSAR-X file.";
  Line line{};
  if (!read_line(file, line, frame, early) || !read_line(file, line, frame, early)) return false;
  if (!read_line(file, line, frame, late)) return false;
  if (!contains(line, product_level_text)) {
    frame.report(foreign);
    return false;
  }
  if (!read_line(file, line, frame, late)) return false;
  if (!contains(line, mission_text)) {
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
  if (gkf_FileExists(path, frame.slot()) != 1) {
    frame.drop();
    return -1;
  }
  gkf_File* file = gkf_Open(path, "r", frame.slot(), 0);
  const bool opened = !frame.failed("gkf_Open fail") && file != nullptr;
  const bool recognised = opened && recognise(file, versionIndex, frame);
  frame.drop();
  gkf_Close(file, frame.slot());
  if (frame.pending()) frame.report("gkf_Close failed", gke_SeverityWarning);
  return recognised ? 0 : -1;
}
