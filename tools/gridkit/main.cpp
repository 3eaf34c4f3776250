#include <cstdio>
#include <exception>
#include <new>

#include "tools/gridkit/commands.h"

namespace {

constexpr int refused = 1;
constexpr int wrong_use = 2;

int run(int argc, char** argv) {
  CLI::App app("Opens raster products through format plug-ins");
  app.require_subcommand(1);
  HostOptions options;
  app.add_option("--plugins", options.plugins, "Folder of the format plug-ins")
      ->type_name("FOLDER");
  app.add_option("--preferences", options.preferences, "File of `group.name = number` lines")
      ->type_name("FILE");
  app.add_flag("--debug", options.debug, "Show the debug channel on standard error");
  Action chosen;
  for (auto* add : {add_formats, add_info, add_read, add_data, add_locate}) add(app, chosen);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? 0 : wrong_use;
  }
  return chosen(Host(options));
}

}  // namespace

int main(int argc, char** argv) try { return run(argc, argv); } catch (const std::bad_alloc&) {
  std::fprintf(stderr, "gridkit: out of memory\n");
  return refused;
} catch (const std::exception& error) {
  std::fprintf(stderr, "gridkit: %s\n", error.what());
  return refused;
}
