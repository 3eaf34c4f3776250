#include "tools/annotation/check.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <utility>

#include "binding/fault_collector.h"
#include "gridkit/os_error.h"
#include "plugin/required_texts.h"
#include "schema/lenience.h"
#include "tools/annotation/annotation_file.h"

namespace {

std::string placed(const std::string& file, std::uint64_t line, std::uint64_t column,
                   const std::string& path, const std::string& message) {
  std::string text = file;
  if (line > 0) text += ':' + std::to_string(line) + ':' + std::to_string(column);
  if (!path.empty()) text += ": " + path;
  return text + ": " + message;
}

}  // namespace

std::string CheckResult::text() const {
  return placed(file, line, column, path, message);
}

std::string CheckResult::text_of(const lmx::Diagnostic& fault) const {
  return placed(file, fault.line, fault.column, fault.path, fault.message());
}

namespace {

void tell(CheckResult& result, const lmx::Diagnostic& fault) {
  result.error = fault.code;
  result.name = fault.name;
  result.path = fault.path;
  result.line = fault.line;
  result.column = fault.column;
  result.message = fault.message();
}

// Binds under a policy, or strictly without one.
CheckResult bind(const std::string& path, const std::optional<std::string>& schema,
                 binding::FaultCollector* collector) {
  const VersionLine version = read_version_line(path);
  CheckResult result;
  result.file = path;
  result.version = version.text;
  result.schema = schema.value_or(version.schema);
  lmx::c_xml_reader_file reader(path.c_str());
  if (!reader.is_open()) {
    result.error = lmx::error_cannot_open;
    result.message = lmx::meaning(lmx::error_cannot_open);
    return result;
  }
  if (collector != nullptr) collector->watch(reader);
  with_root(result.schema, [&](auto& root) { return root.unmarshal(reader); });
  result.message = "valid";
  if (const lmx::Diagnostic* fault = reader.diagnostic(); fault != nullptr) tell(result, *fault);
  if (collector != nullptr) {
    result.faults = collector->faults();
    result.ends_early = !collector->saw_all();
  }
  return result;
}

}  // namespace

CheckResult check_annotation(const std::string& path, const std::optional<std::string>& schema,
                             Faults wanted) {
  binding::FaultCollector collector;
  return bind(path, schema, wanted == Faults::all ? &collector : nullptr);
}

CheckResult check_leniently(const std::string& path, const std::optional<std::string>& schema) {
  binding::FaultCollector lenience(level1bProduct::may_be_passed_over);
  CheckResult result = bind(path, schema, &lenience);
  if (!result.ends_early && !result.faults.empty()) {
    CheckResult passed;
    passed.file = result.file;
    passed.version = result.version;
    passed.schema = result.schema;
    passed.message = "valid";
    passed.faults = std::move(result.faults);
    return passed;
  }
  // The last fault is the one that ended the read.
  if (result.ends_early) {
    tell(result, result.faults.back());
    result.faults.pop_back();
  }
  return result;
}

std::string missing_text(const std::string& path, const std::string& schema) {
  return with_root(schema, [&](auto& root) -> std::string {
    bind_leniently(root, path);
    const char* missing = missing_required_text(root.get_level1Product());
    return missing == nullptr ? "" : missing;
  });
}

namespace {

// Why a file cannot be read, empty where it can.
std::string fault_of(const std::string& image) {
  namespace fs = std::filesystem;
  std::error_code failed;
  const fs::file_status status = fs::status(image, failed);
  if (status.type() == fs::file_type::not_found) return "no such image file";
  if (failed) return gridkit::os_error_in_words(failed.value());
  if (status.type() != fs::file_type::regular) return "not a regular file";
  return ::eaccess(image.c_str(), R_OK) == 0 ? "" : gridkit::os_error_in_words(errno);
}

// A name made by strangers, as far as a message shows it.
std::string shown(const std::string& name) {
  constexpr std::size_t longest = 1000;
  return name.size() <= longest ? name : name.substr(0, longest) + "...";
}

}  // namespace

std::vector<std::string> image_faults(const std::string& path, const std::string& schema) {
  std::vector<std::string> faults;
  with_root(schema, [&](auto& root) {
    bind_leniently(root, path);
    const auto named = root.get_level1Product().get_productComponents().size_imageData();
    const std::int32_t wanted = root.numberOfLayers();
    if (wanted > 0 && static_cast<std::uint32_t>(wanted) > named) {
      faults.push_back(path + ": numberOfLayers is " + std::to_string(wanted) +
                       ", but productComponents names " + std::to_string(named) +
                       (named == 1 ? " image file" : " image files"));
    }
    constexpr std::size_t most_images = 4;
    const std::string folder = path.substr(0, path.rfind('/') + 1);
    for (std::uint32_t i = 0; i < std::min<std::size_t>(named, most_images); ++i) {
      const std::string image = folder + root.imageDataPath(i) + '/' + root.imageDataFilename(i);
      if (const std::string fault = fault_of(image); !fault.empty()) {
        faults.push_back(shown(image) + ": " + fault);
      }
    }
  });
  return faults;
}
