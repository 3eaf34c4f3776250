#include "tools/annotation/check.h"

#include <filesystem>

#include "plugin/required_texts.h"
#include "tools/annotation/annotation_file.h"

std::string CheckResult::text() const {
  std::string text = file;
  if (line > 0) text += ':' + std::to_string(line) + ':' + std::to_string(column);
  if (!path.empty()) text += ": " + path;
  return text + ": " + message;
}

CheckResult check_annotation(const std::string& path, const std::optional<std::string>& schema) {
  const VersionLine version = read_version_line(path);
  CheckResult result{path, version.text, schema.value_or(version.schema), 0, {}, {}, 0, 0, {}};
  lmx::c_xml_reader_file reader(path.c_str());
  if (!reader.is_open()) {
    result.error = lmx::error_cannot_open;
    result.message = lmx::meaning(lmx::error_cannot_open);
    return result;
  }
  result.error = with_root(result.schema, [&](auto& root) { return root.unmarshal(reader); });
  if (const lmx::diagnostic* fault = reader.diagnostic(); fault != nullptr) {
    result.name = fault->name;
    result.path = fault->path;
    result.line = fault->line;
    result.column = fault->column;
    result.message = fault->message();
  } else {
    result.message = "valid";
  }
  return result;
}

std::string missing_text(const std::string& path, const std::string& schema) {
  return with_root(schema, [&](auto& root) -> std::string {
    root.unmarshal(path.c_str());
    const char* missing = missing_required_text(root.get_level1Product());
    return missing == nullptr ? "" : missing;
  });
}

std::vector<std::string> missing_images(const std::string& path, const std::string& schema) {
  std::vector<std::string> missing;
  with_root(schema, [&](auto& root) {
    root.unmarshal(path.c_str());
    const auto folder = std::filesystem::path(path).parent_path();
    const auto images = root.get_level1Product().get_productComponents().size_imageData();
    for (std::uint32_t i = 0; i < images; ++i) {
      const auto image = folder / root.imageDataPath(i) / root.imageDataFilename(i);
      std::error_code failed;
      if (!std::filesystem::exists(image, failed)) missing.push_back(image.string());
    }
  });
  return missing;
}
