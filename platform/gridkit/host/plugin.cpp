#include "gridkit/plugin.h"

#include <algorithm>
#include <cstdlib>
#include <exception>
#include <mutex>
#include <new>
#include <system_error>
#include <utility>

#include <dlfcn.h>

#include "gridkit/host/exports.h"
#include "gridkit/host/opening_mutex.h"
#include "gridkit/os_error.h"
#include "gridkit/product.h"
#include "gridkit/report.h"
#include "gridkit/samples.h"
#include "gridkit/services/host_texts.h"
#include "gridkit/services/open_scope.h"
#include "handlepool/handlepool.h"

namespace gridkit {

namespace {

FormatDescription describe(const Exports& exports) {
  FormatDescription format;
  char* text = nullptr;
  char** list = nullptr;
  std::int32_t count = 0;
  if (exports.InstanceDescriptionGet(&text) == 0) format.description = take_text(text);
  if (exports.InstanceTitleListGet(&count, &list) == 0) format.titles = take_texts(list, count);
  // These three lists have as many entries as there are titles.
  const auto titles = static_cast<std::int32_t>(format.titles.size());
  unsigned char* flags = nullptr;
  if (exports.InstanceTemplateListGet(&list, &flags) == 0) {
    const HeapBlock owned_flags(flags);
    format.templates = take_texts(list, titles);
  }
  if (exports.InstanceExtListGet(&list) == 0) format.extensions = take_texts(list, titles);
  if (exports.InstanceShortNameListGet(&list) == 0) format.short_names = take_texts(list, titles);
  if (exports.InstancePixelTypesGet(&count, &list) == 0) {
    format.pixel_types = take_texts(list, count);
  }
  if (exports.InstanceLayerTypesGet(&count, &list) == 0) {
    format.layer_types = take_texts(list, count);
  }
  return format;
}

}  // namespace

ReportCollector::ReportCollector() : before_(gke_SetReportSink({&collect, this})) {}

ReportCollector::~ReportCollector() {
  gke_SetReportSink(before_);
}

// Called by the plug-in's printing, so nothing may be thrown.
void ReportCollector::collect(const gke_Report* report, void* collector) try {
  auto& text = static_cast<ReportCollector*>(collector)->text_;
  const gke_Report* oldest = report;
  for (; report != nullptr; report = gke_ReportPrevious(report)) {
    if (!text.empty()) text += "; ";
    text += std::string(gke_ReportWord(report)) + ": " + gke_ReportMessage(report);
    oldest = report;
  }
  if (oldest == nullptr) return;
  const std::string message = gke_ReportMessage(oldest);
  if (!message.ends_with(" failed")) static_cast<ReportCollector*>(collector)->cause_ = message;
} catch (const std::bad_alloc&) {
  // Short enough to need no memory.
  auto& text = static_cast<ReportCollector*>(collector)->text_;
  if (text.empty()) text = "out of memory";
}

std::shared_ptr<Plugin> Plugin::load(const std::filesystem::path& library) {
  std::shared_ptr<Plugin> plugin(new Plugin);
  plugin->library_ = library;
  plugin->exports_ = find_exports(library);
  plugin->format_ = describe(*plugin->exports_);
  return plugin;
}

Plugin::~Plugin() = default;

std::optional<std::int32_t> Plugin::identify(const std::string& path) const {
  std::int32_t title = -1;
  exports_->FileTitleIdentifyAndOpen(path.c_str(), &title, nullptr);
  return title < 0 ? std::nullopt : std::optional(title);
}

Product Plugin::open(const std::string& path, const std::string& mode) {
  const ReportCollector reports;
  const std::lock_guard opening(opening_mutex(path));
  const OpenScope scope(path);
  FileHandle record = nullptr;
  std::int32_t title = -1;
  try {
    record = exports_->FileTitleIdentifyAndOpen(path.c_str(), &title, mode.c_str());
  } catch (const std::exception& escaped) {
    throw Error(path + ": the plug-in gave up: " + escaped.what());
  }
  if (record == nullptr && reports.text().empty()) {
    throw Error(path + ": not a file of the format " + format_.titles.at(0));
  }
  // An open that fails late hands out its unfinished record; it is not in the registry.
  const bool registered = pool_FindFileHandleIfOpen(path.c_str(), 0) == record;
  if (record == nullptr || !registered) {
    // Not every operation of the toolkit can report.
    std::string why = scope.refusal();
    std::string calls = reports.text();
    if (calls.find(why) == std::string::npos) calls += (calls.empty() ? "" : "; ") + why;
    if (calls.empty()) why = "the open product is not in the registry";
    throw Error(path + ": cannot be opened", why.empty() ? reports.cause() : why, calls);
  }
  return Product(shared_from_this(), record, path, title);
}

Product Plugin::open_leniently(const std::string& path) {
  return open_leniently(path, {});
}

Product Plugin::open_leniently(const std::string& path, const NamedData& data) {
  const auto title = identify(path);
  if (!title) throw Error(path + ": not a file of the format " + format_.titles.at(0));
  return Product(shared_from_this(), Samples::open_leniently(*this, path), path, *title, data);
}

PluginFolder load_plugins(const std::filesystem::path& folder) {
  PluginFolder loaded;
  std::vector<std::filesystem::path> libraries;
  std::error_code failed;
  for (const auto& entry : std::filesystem::directory_iterator(folder, failed)) {
    if (entry.path().extension() == ".so") libraries.push_back(entry.path());
  }
  if (failed) loaded.refused.push_back(folder.string() + ": " + os_error_in_words(failed.value()));
  std::sort(libraries.begin(), libraries.end());
  for (const auto& library : libraries) {
    try {
      loaded.plugins.push_back(Plugin::load(library));
    } catch (const Error& error) {
      loaded.refused.emplace_back(error.what());
    }
  }
  return loaded;
}

std::filesystem::path default_plugin_folder() {
  // A program with more rights than its user takes no libraries from the user's environment.
  const char* chosen = ::secure_getenv("GRIDKIT_PLUGINS");
  if (chosen != nullptr && *chosen != '\0') return chosen;
  Dl_info own{};
  if (::dladdr(reinterpret_cast<void*>(&default_plugin_folder), &own) == 0) return "gridkit";
  return std::filesystem::path(own.dli_fname).parent_path() / "gridkit";
}

}  // namespace gridkit
