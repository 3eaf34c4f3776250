#include "tools/annotation/annotation_file.h"

#include <algorithm>
#include <array>

#include "lmx/byte_sources.h"
#include "plugin/recognition_texts.h"
#include "plugin/schema_version.h"

namespace {

constexpr std::size_t version_line = 7;
constexpr std::size_t longest_line = 254;  // its end included; the rest counts as a line of its own

// The first bytes of a file, as many as seven lines can have.
std::string head_of(const std::string& path) {
  std::array<char, version_line * longest_line> head{};
  lmx::file_source file(path.c_str());
  std::size_t size = 0;
  for (std::ptrdiff_t got = 1; got > 0 && size < head.size();) {
    got = file.read(head.data() + size, head.size() - size);
    if (got > 0) size += static_cast<std::size_t>(got);
  }
  return {head.data(), size};
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
  return contains(lines[2], product_level_text) && contains(lines[3], mission_text) &&
         !lines.back().empty();
}
