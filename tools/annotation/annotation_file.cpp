#include "tools/annotation/annotation_file.h"

#include <algorithm>
#include <array>

#include "lmx/byte_sources.h"
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

// The version line as the plug-in's recognition reads it: a zero byte ends a line's text.
std::string version_line_of(std::string_view head) {
  std::string_view line;
  for (std::size_t i = 0; i < version_line; ++i) {
    const std::size_t end = std::min(head.find('\n'), head.size() - (head.empty() ? 0 : 1)) + 1;
    line = head.substr(0, std::min(end, longest_line));
    head.remove_prefix(line.size());
  }
  return std::string(line.substr(0, line.find('\0')));
}

}  // namespace

VersionLine read_version_line(const std::string& path) {
  const std::string line = version_line_of(head_of(path));
  VersionLine found{std::nullopt, "4.0"};
  for (int index = 0; index < schema_text_none; ++index) {
    if (line.find(schema_version_texts[index]) == std::string::npos) continue;
    found = {schema_version_texts[index], schema_of_text[index]};
  }
  return found;
}
