#include <iostream>

#include "tools/command_line/help.h"
#include "tools/command_line/memory_use.h"
#include "tools/command_line/program.h"
#include "tools/command_line/terminal.h"
#include "tools/gridkit/commands.h"
#include "tools/gridkit/terminal/interruption.h"

namespace {

constexpr const char* description =
    "Opens raster products through format plug-ins: shows what is in them, reads their pixels and "
    "places them on Earth.";

constexpr const char* footer =
    R"(A PRODUCT is given as its annotation or as the folder that holds it.

Examples:
  gridkit info PRODUCT                                  what it is and what is in it
  gridkit layers PRODUCT                                the names of its layers, one a line
  gridkit read PRODUCT X_HH_MAGNITUDE_1 image.tif       pixels into a GeoTIFF
  gridkit quicklook PRODUCT picture.png                 a small picture of a layer
  gridkit report PRODUCT product.html                   all of it on one page
  gridkit locate PRODUCT 1200 340                       where line 1200, sample 340 lies
  gridkit VERB --help                                   all about one verb

Results go to standard output, remarks and errors to standard error. Exit status: 0 done,
1 the input was refused, 2 wrong use.)";

// What was called on the way to a refusal, for those who look for what went wrong inside.
void show_calls(const gridkit::Error& error) {
  if (!error.calls().empty()) std::cerr << "gridkit: debug: " << error.calls() << '\n';
}

// For every verb that opens a product.
void offer_leniency(CLI::App& app, HostOptions& options) {
  for (CLI::App* verb :
       app.get_subcommands([](CLI::App* any) { return any->get_name() != "formats"; })) {
    verb->add_flag(
        "--lenient", options.lenient,
        "Read a product that is refused for values that no pixel needs, and warn of them");
  }
}

int run(int argc, char** argv) {
  settle_memory_use();
  CLI::App app(description, "gridkit");
  begin_program(app);
  app.require_subcommand(1);
  app.footer(footer);
  HostOptions options;
  app.add_option("--plugins", options.plugins, "Folder of the format plug-ins")
      ->type_name("FOLDER");
  app.add_option("--preferences", options.preferences, "File of `group.name = number` lines")
      ->type_name("FILE");
  app.add_flag("--debug", options.debug,
               "Show the debug channel, and the calls behind a refusal, on standard error");
  Action chosen;
  for (auto* add : {add_formats, add_info, add_layers, add_samples, add_read, add_quicklook,
                    add_data, add_locate, add_report}) {
    add(app, chosen);
  }
  offer_leniency(app, options);
  head_verbs(app);
  return run_program(app, argc, argv, [&] {
    watch_for_interruption();
    try {
      return chosen(Host(options));
    } catch (const Interrupted&) {
      complain("gridkit", "interrupted; what was not complete has been removed");
      end_by_signal();
    } catch (const gridkit::Error& error) {
      if (options.debug) show_calls(error);
      throw;
    }
  });
}

}  // namespace

int main(int argc, char** argv) try { return run(argc, argv); } catch (...) {
  return tell_refusal("gridkit");
}
