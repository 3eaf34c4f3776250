#include "tools/gridkit/read/output_file.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <iterator>
#include <span>
#include <system_error>
#include <vector>

#include <unistd.h>

#include "gridkit/error.h"
#include "tools/command_line/existing_output.h"
#include "tools/gridkit/read/standard_output.h"

namespace {

namespace fs = std::filesystem;

struct FormatEntry {
  const char* name;
  OutputFormat format;
  std::vector<std::string> endings;
};

const std::vector<FormatEntry>& entries() {
  static const std::vector<FormatEntry> list = {{"GTiff", OutputFormat::geotiff, {".tif", ".tiff"}},
                                                {"COG", OutputFormat::cog, {}},
                                                {"PNG", OutputFormat::png, {".png"}},
                                                {"ENVI", OutputFormat::envi, {".img", ".envi"}}};
  return list;
}

// Of the output that is no file.
gridkit::ByteSink into_standard_output() {
  return [](std::span<const std::byte> bytes) { write_to_standard_output(bytes); };
}

// Whether this process has the file open, as it has those of the product. The standard streams are
// none of them.
bool is_open(const fs::path& path) {
  std::error_code failed;
  for (fs::directory_iterator open("/proc/self/fd", failed), end; !failed && open != end;
       open.increment(failed)) {
    const std::string number = open->path().filename().string();
    if (number == "0" || number == "1" || number == "2") continue;
    std::error_code ignored;
    if (fs::equivalent(open->path(), path, ignored)) return true;
  }
  return false;
}

void check_file(const fs::path& path, bool overwrite, const gridkit::Product& product) {
  std::error_code ignored;
  if (!fs::exists(path, ignored)) return;
  if (fs::equivalent(path, product.path(), ignored) || is_open(path)) {
    throw gridkit::Error(path.string() + ": is a file of the product itself");
  }
  check_existing(path.string(), overwrite);
}

}  // namespace

const std::vector<std::string>& output_format_names() {
  static const std::vector<std::string> names = [] {
    std::vector<std::string> list;
    for (const FormatEntry& entry : entries()) list.emplace_back(entry.name);
    return list;
  }();
  return names;
}

std::optional<OutputFormat> output_format(const std::string& name, const std::string& path) {
  std::string ending = fs::path(path).extension().string();
  std::transform(ending.begin(), ending.end(), ending.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  for (const FormatEntry& entry : entries()) {
    const bool fits =
        std::find(entry.endings.begin(), entry.endings.end(), ending) != entry.endings.end();
    if (name.empty() ? fits : name == entry.name) return entry.format;
  }
  return std::nullopt;
}

std::string output_ending(OutputFormat format) {
  switch (format) {
    case OutputFormat::png:
      return ".png";
    case OutputFormat::envi:
      return ".img";
    case OutputFormat::geotiff:
    case OutputFormat::cog:
      break;
  }
  return ".tif";
}

bool can_stream(OutputFormat format) {
  return format == OutputFormat::png || format == OutputFormat::envi;
}

std::string shown_name(const std::string& path) {
  return path == standard_output ? "standard output" : path;
}

void check_output(const std::string& path, OutputFormat format, bool overwrite,
                  const gridkit::Product& product) {
  if (path == standard_output) {
    if (::isatty(STDOUT_FILENO) == 0) return;
    throw gridkit::Error("standard output is a terminal, which shows no pixels; name a file");
  }
  check_file(path, overwrite, product);
  if (format == OutputFormat::envi) check_file(path + ".hdr", overwrite, product);
}

std::unique_ptr<gridkit::RasterWriter> create_output(OutputFormat format, const std::string& path,
                                                     std::int32_t width, std::int32_t height,
                                                     const gridkit::RasterOptions& options) {
  if (path == standard_output) {
    const auto stream = format == OutputFormat::png ? gridkit::stream_png : gridkit::stream_envi;
    return stream(into_standard_output(), shown_name(path), width, height, options);
  }
  switch (format) {
    case OutputFormat::cog:
      return gridkit::create_cog(path, width, height, options);
    case OutputFormat::png:
      return gridkit::create_png(path, width, height, options);
    case OutputFormat::envi:
      return gridkit::create_envi(path, width, height, options);
    case OutputFormat::geotiff:
      break;
  }
  return gridkit::create_geotiff(path, width, height, options);
}
