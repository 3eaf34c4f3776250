#include "tools/annotation/annotation_file.h"

#include <algorithm>
#include <array>
#include <set>

#include "lmx/byte_sources.h"
#include "plugin/recognition_texts.h"
#include "plugin/schema_version.h"

namespace {

constexpr std::size_t version_line = 7;
constexpr std::size_t longest_line = 254;  // its end included; the rest counts as a line of its own

// The first bytes of a file, as many as seven lines can have.
std::string head_of(const std::string& path) {
  std::array<char, version_line * longest_line> head{};
  lmx::FileSource file(path.c_str());
  const std::ptrdiff_t got = file.read(0, head);
  return {head.data(), static_cast<std::size_t>(std::max<std::ptrdiff_t>(got, 0))};
}

// The first lines as the plug-in's recognition reads them: a zero byte ends a line's text. Those
// that the file does not have are empty.
std::array<std::string, version_line> first_lines_of(const std::string& path) {
  const std::string head = head_of(path);
  std::string_view rest = head;
  std::array<std::string, version_line> lines;
  for (std::string& text : lines) {
    const std::size_t end = rest.find('\n');
    const std::string_view line = rest.substr(
        0, end == std::string_view::npos ? longest_line : std::min(end + 1, longest_line));
    rest.remove_prefix(line.size());
    text = line.substr(0, line.find('\0'));
  }
  return lines;
}

bool contains(const std::string& line, const char* text) {
  return line.find(text) != std::string::npos;
}

// The satellite that the fourth line names, empty for one of another family.
std::string mission_in(const std::string& line) {
  if (contains(line, mission_text)) return mission_text;
  for (const char* sister : sister_mission_texts) {
    if (contains(line, sister)) return sister;
  }
  return {};
}

}  // namespace

VersionLine read_version_line(const std::string& path) {
  const std::string line = first_lines_of(path).back();
  VersionLine found{std::nullopt, "4.0"};
  for (int index = 0; index < schema_text_none; ++index) {
    if (!contains(line, schema_version_texts[index])) continue;
    found = {schema_version_texts[index], schema_of_text[index]};
  }
  return found;
}

bool is_recognised(const std::string& path) {
  const auto lines = first_lines_of(path);
  return contains(lines[2], product_level_text) && !mission_in(lines[3]).empty() &&
         !lines.back().empty();
}

std::string what_several_are(const std::vector<std::filesystem::path>& annotations) {
  std::set<std::string> missions;
  for (const auto& annotation : annotations) {
    missions.insert(mission_in(first_lines_of(annotation.string())[3]));
  }
  const bool is_pair =
      annotations.size() == 2 && missions == std::set<std::string>{mission_text, "TDX-1"};
  return is_pair ? "a pair of products, of TSX-1 and TDX-1, as bistatic acquisitions have them"
                 : "several products";
}
