#include "gridkit/opener.h"

#include <algorithm>
#include <utility>

#include "gridkit/product_path.h"

namespace gridkit {

namespace {

using Plugins = std::vector<std::shared_ptr<Plugin>>;

bool has_known_ending(const Plugins& plugins, const std::filesystem::path& file) {
  return std::any_of(plugins.begin(), plugins.end(), [&](const auto& plugin) {
    const auto& endings = plugin->format().extensions;
    return std::any_of(endings.begin(), endings.end(),
                       [&](const std::string& known) { return has_ending(file, known); });
  });
}

bool is_recognised(const Plugins& plugins, const std::filesystem::path& file) {
  return std::any_of(plugins.begin(), plugins.end(),
                     [&](const auto& plugin) { return plugin->identify(file.string()); });
}

}  // namespace

Opener::Opener(const std::vector<std::filesystem::path>& folders, WhatSeveralAre what_several_are)
    : what_several_are_(std::move(what_several_are)) {
  const auto searched =
      folders.empty() ? std::vector<std::filesystem::path>{default_plugin_folder()} : folders;
  std::string message = "no format plug-in in";
  std::string refusals;
  for (const auto& folder : searched) {
    const PluginFolder loaded = load_plugins(folder);
    plugins_.insert(plugins_.end(), loaded.plugins.begin(), loaded.plugins.end());
    message += (refusals.empty() && &folder == &searched.front() ? " " : ", ") + folder.string();
    for (const std::string& refused : loaded.refused) refusals += "\n  " + refused;
  }
  if (plugins_.empty()) throw Error(message + refusals);
}

std::string Opener::find(const std::string& given) const {
  const auto several = [this](const std::vector<std::filesystem::path>& files) {
    return what_several_are_ ? what_several_are_(files) : std::string("several products");
  };
  return find_product(
      given, {[this](const auto& file) { return has_known_ending(plugins_, file); },
              [this](const auto& file) { return is_recognised(plugins_, file); }, several});
}

RecognisedProduct Opener::recognise(const std::string& given) const {
  const std::string path = find(given);
  for (const auto& plugin : plugins_) {
    if (const auto title = plugin->identify(path)) return {plugin, *title, path};
  }
  throw NotRecognised(path + ": of none of the known formats");
}

Product Opener::open(const std::string& given) const {
  const RecognisedProduct found = recognise(given);
  return found.plugin->open(found.path);
}

}  // namespace gridkit
