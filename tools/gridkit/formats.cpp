#include <iostream>

#include "tools/gridkit/commands.h"

namespace {

int list_formats(const Host& host) {
  for (const auto& plugin : host.plugins()) {
    const gridkit::FormatDescription& format = plugin->format();
    for (std::size_t i = 0; i < format.titles.size(); ++i) {
      std::cout << format.titles[i];
      if (i < format.templates.size()) std::cout << "  " << format.templates[i];
      std::cout << "  " << format.description << '\n';
    }
  }
  return 0;
}

}  // namespace

void add_formats(CLI::App& app, Action& chosen) {
  CLI::App* command = app.add_subcommand("formats", "List the formats");
  command->callback([&chosen] { chosen = list_formats; });
}
