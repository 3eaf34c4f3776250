#include "tools/gridkit/host.h"

#include <algorithm>
#include <filesystem>

#include "debug/debug_channel.h"
#include "gridkit/preference.h"
#include "gridkit/report.h"
#include "tools/annotation/check.h"
#include "tools/command_line/product_path.h"

namespace {

void load_preferences(const std::string& path) {
  gke_Report* report = nullptr;
  if (gkp_LoadPreferences(path.c_str(), &report) == 0) return;
  const std::string message = gke_ReportMessage(report);
  gke_DeleteErrorReportEx(&report);
  throw gridkit::Error(message);
}

// Why a plug-in refused a file: the place in the annotation, or what is wrong with its images.
std::string explain(const std::string& path, const char* refusal) {
  const CheckResult check = check_annotation(path);
  std::string text = refusal;
  if (check.error != 0) return text + "\n  " + check.text();
  const std::string missing = missing_text(path, check.schema);
  if (!missing.empty()) {
    return text + "\n  " + path + ": " + missing +
           ": the element is absent or holds no text, and the product cannot be read without it";
  }
  for (const std::string& fault : image_faults(path, check.schema)) text += "\n  " + fault;
  return text;
}

// The plug-ins are asked which of the files with their formats' endings they recognise.
ProductFiles files_of(const std::vector<std::shared_ptr<gridkit::Plugin>>& plugins) {
  const auto any = [&plugins](auto is_so) {
    return [&plugins, is_so](const std::filesystem::path& file) {
      return std::any_of(plugins.begin(), plugins.end(),
                         [&](const auto& plugin) { return is_so(*plugin, file); });
    };
  };
  return {any([](const gridkit::Plugin& plugin, const std::filesystem::path& file) {
            const auto& endings = plugin.format().extensions;
            return std::any_of(endings.begin(), endings.end(),
                               [&](const std::string& known) { return has_ending(file, known); });
          }),
          any([](const gridkit::Plugin& plugin, const std::filesystem::path& file) {
            return plugin.identify(file.string()).has_value();
          })};
}

}  // namespace

Host::Host(const HostOptions& options) {
  if (!options.preferences.empty()) load_preferences(options.preferences);
  debug_EnableChannel(options.debug ? 1 : 0);
  std::filesystem::path folder = options.plugins;
  if (folder.empty()) folder = gridkit::default_plugin_folder();
  folder_ = gridkit::load_plugins(folder);
  if (!folder_.plugins.empty()) return;
  std::string message = "no format plug-in in " + folder.string();
  for (const std::string& refused : folder_.refused) message += "\n  " + refused;
  throw gridkit::Error(message);
}

gridkit::Product Host::open(const std::string& given) const {
  const std::string path = find_product(given, files_of(plugins()));
  for (const auto& plugin : plugins()) {
    if (!plugin->identify(path)) continue;
    try {
      return plugin->open(path);
    } catch (const gridkit::Error& error) {
      throw gridkit::Error(explain(path, error.what()));
    }
  }
  throw gridkit::Error(path + ": of none of the known formats; see `gridkit formats`");
}
