#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>

#include "tools/gridkit/commands.h"
#include "tools/gridkit/print_json.h"

namespace {

using json = nlohmann::ordered_json;

constexpr const char* footer =
    R"(Each line tells a format's title, the names its files have, and its description.

Example:
  gridkit formats --json)";

// The entry of a list that has one a title, empty where the plug-in gave fewer.
std::string entry(const std::vector<std::string>& list, std::size_t i) {
  return i < list.size() ? list[i] : std::string();
}

void print_as_text(const Host& host) {
  for (const auto& plugin : host.plugins()) {
    const gridkit::FormatDescription& format = plugin->format();
    for (std::size_t i = 0; i < format.titles.size(); ++i) {
      std::cout << format.titles[i];
      if (i < format.templates.size()) std::cout << "  " << format.templates[i];
      std::cout << "  " << format.description << '\n';
    }
  }
}

void print_as_json(const Host& host) {
  json list = json::array();
  for (const auto& plugin : host.plugins()) {
    const gridkit::FormatDescription& format = plugin->format();
    for (std::size_t i = 0; i < format.titles.size(); ++i) {
      list.push_back({{"title", format.titles[i]},
                      {"template", entry(format.templates, i)},
                      {"extension", entry(format.extensions, i)},
                      {"description", format.description},
                      {"pixelTypes", format.pixel_types},
                      {"layerTypes", format.layer_types},
                      {"plugin", plugin->library().string()}});
    }
  }
  print_json(list);
}

}  // namespace

void add_formats(CLI::App& app, Action& chosen) {
  const auto as_json = std::make_shared<bool>(false);
  CLI::App* command = app.add_subcommand("formats", "List the formats that the plug-ins read");
  command->footer(footer);
  command->add_flag("--json", *as_json, "As JSON on standard output");
  command->callback([as_json, &chosen] {
    chosen = [as_json](const Host& host) {
      *as_json ? print_as_json(host) : print_as_text(host);
      return 0;
    };
  });
}
