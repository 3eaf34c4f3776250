#include "tools/gridkit/host.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <filesystem>

#include "debug/debug_channel.h"
#include "gridkit/preference.h"
#include "gridkit/report.h"
#include "tools/annotation/annotation_file.h"
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
[[noreturn]] void explain(const gridkit::Plugin& plugin, std::int32_t title,
                          const std::string& path, const gridkit::Error& refusal) {
  const CheckResult check = check_annotation(path);
  if (check.error != 0) throw gridkit::Error(check.text(), {}, refusal.calls());
  const std::string missing = missing_text(path, check.schema);
  if (!missing.empty()) {
    throw gridkit::Error(
        path + ": " + missing +
            ": the element is absent or holds no text, and the product cannot be read without it",
        {}, refusal.calls());
  }
  std::string faults;
  for (const std::string& fault : image_faults(path, check.schema)) {
    faults += (faults.empty() ? "" : "\n  ") + fault;
  }
  if (!faults.empty()) {
    throw MissingImages(faults, refusal.calls(),
                        plugin.format().titles.at(static_cast<std::size_t>(title)), path);
  }
  const bool says_why = !refusal.sentence().ends_with("cannot be opened");
  throw gridkit::Error(
      refusal.sentence() + (says_why ? "" : "; `gridkit --debug` shows the calls behind it"), {},
      refusal.calls());
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
          }),
          what_several_are};
}

}  // namespace

Host::Host(const HostOptions& options) {
  // Where the user's preferences say nothing else, products of sister satellites are welcome.
  gkp_SetNumberPreference("tsx", "sister_satellites", 1, nullptr);
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

std::string Host::find(const std::string& given) const {
  return find_product(given, files_of(plugins()));
}

gridkit::Product Host::open(const std::string& given) const {
  const std::string path = find(given);
  for (const auto& plugin : plugins()) {
    const auto title = plugin->identify(path);
    if (!title) continue;
    try {
      return plugin->open(path);
    } catch (const gridkit::Error& error) {
      explain(*plugin, *title, path, error);
    }
  }
  throw gridkit::Error(path + ": of none of the known formats; see `gridkit formats`");
}
