#include "tools/annotation/annotation_file.h"

#include <fstream>

#include "plugin/schema_version.h"

VersionLine read_version_line(const std::string& path) {
  std::ifstream file(path);
  std::string line;
  for (int i = 0; i < 7; ++i) {
    if (!std::getline(file, line)) line.clear();
  }
  VersionLine found{std::nullopt, "4.0"};
  for (int index = 0; index < schema_text_none; ++index) {
    if (line.find(schema_version_texts[index]) == std::string::npos) continue;
    found = {schema_version_texts[index], schema_of_text[index]};
  }
  return found;
}
