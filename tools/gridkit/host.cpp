#include "tools/gridkit/host.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <utility>

#include "debug/debug_channel.h"
#include "gridkit/preference.h"
#include "gridkit/report.h"
#include "rmdllib/radar_geometry.h"
#include "tools/annotation/annotation_file.h"
#include "tools/annotation/check.h"
#include "tools/annotation/sensor_model_record.h"
#include "tools/gridkit/terminal/terminal.h"

namespace {

void load_preferences(const std::string& path) {
  gke_Report* report = nullptr;
  if (gkp_LoadPreferences(path.c_str(), &report) == 0) return;
  const std::string message = gke_ReportMessage(report);
  gke_DeleteErrorReportEx(&report);
  throw gridkit::Error(message);
}

// What is wrong with an annotation, and what leniency does about it.
[[noreturn]] void explain_fault(const CheckResult& check, const gridkit::Error& refusal,
                                bool lenient) {
  std::string sentence = check.text();
  if (lenient) {
    sentence += "; --lenient does not pass over it";
  } else if (check_leniently(check.file).error == 0) {
    sentence += "; --lenient reads the product over it";
  }
  throw gridkit::Error(sentence, {}, refusal.calls());
}

// Why a plug-in refused a file: the place in the annotation, or what is wrong with its images.
[[noreturn]] void explain(const gridkit::Plugin& plugin, std::int32_t title,
                          const std::string& path, const gridkit::Error& refusal, bool lenient) {
  const CheckResult check = lenient ? check_leniently(path) : check_annotation(path);
  if (check.error != 0) explain_fault(check, refusal, lenient);
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
                        plugin.format().titles.at(static_cast<std::size_t>(title)), path,
                        gridkit::find_product_facts(plugin, path));
  }
  const bool says_why = !refusal.sentence().ends_with("cannot be opened");
  throw gridkit::Error(
      refusal.sentence() + (says_why ? "" : "; `gridkit --debug` shows the calls behind it"), {},
      refusal.calls());
}

// The sensor model that the plug-in would publish; none of an image on a map.
gridkit::NamedData data_of(const std::string& path) {
  gridkit::NamedData data;
  if (auto model = sensor_model_record(path)) {
    data[std::string(":") + rmdllib::RadarGeometry::design] = std::move(*model);
  }
  return data;
}

// Over the plug-in's companion, with a warning for each value that was passed over.
gridkit::Product open_leniently(gridkit::Plugin& plugin, std::int32_t title,
                                const std::string& path) {
  try {
    const gridkit::NamedData data = data_of(path);
    gridkit::Product product = plugin.open_leniently(path, data);
    for (const std::string& remark : product.passed_over()) warn(remark + "; passed over");
    warn(path + ": read without its plug-in; " +
         (data.empty() ? "its data and its map are not there"
                       : "its sensor model is made from the annotation, other data are not there"));
    return product;
  } catch (const gridkit::Error& error) {
    explain(plugin, title, path, error, true);
  }
}

}  // namespace

Host::Host(const HostOptions& options) : lenient_(options.lenient) {
  // Where the user's preferences say nothing else, products of sister satellites are welcome.
  gkp_SetNumberPreference("tsx", "sister_satellites", 1, nullptr);
  if (!options.preferences.empty()) load_preferences(options.preferences);
  debug_EnableChannel(options.debug ? 1 : 0);
  std::vector<std::filesystem::path> folders;
  if (!options.plugins.empty()) folders.emplace_back(options.plugins);
  opener_.emplace(folders, what_several_are);
}

std::string Host::find(const std::string& given) const {
  return opener_->find(given);
}

gridkit::Product Host::open(const std::string& given) const {
  const gridkit::RecognisedProduct found = recognise(given);
  try {
    return found.plugin->open(found.path);
  } catch (const gridkit::Error& error) {
    if (lenient_) return open_leniently(*found.plugin, found.title, found.path);
    explain(*found.plugin, found.title, found.path, error, false);
  }
}

gridkit::RecognisedProduct Host::recognise(const std::string& given) const {
  try {
    return opener_->recognise(given);
  } catch (const gridkit::NotRecognised& error) {
    throw gridkit::Error(std::string(error.what()) + "; see `gridkit formats`");
  }
}
