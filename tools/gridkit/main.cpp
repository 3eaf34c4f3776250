#include <cerrno>
#include <cstdio>
#include <exception>
#include <iostream>
#include <new>
#include <string>
#include <vector>

#include "gridkit/os_error.h"
#include "tools/command_line/help.h"
#include "tools/gridkit/commands.h"
#include "tools/gridkit/terminal/interruption.h"
#include "tools/gridkit/terminal/suggestion.h"
#include "tools/gridkit/terminal/terminal.h"

namespace {

constexpr int refused = 1;
constexpr int wrong_use = 2;

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

void complain(const std::string& message) {
  std::cerr << on_errors("gridkit:", Style::red) << ' ' << message << '\n';
}

// What is wrong with the command line, and where help is.
std::string explain(const CLI::App& app, const CLI::ParseError& error) {
  const auto chosen = app.get_subcommands();
  if (!chosen.empty()) {
    const std::string verb = chosen.front()->get_name();
    return verb + ": " + error.what() + "\nSee `gridkit " + verb + " --help`.";
  }
  std::vector<std::string> verbs;
  for (const CLI::App* verb : app.get_subcommands([](const CLI::App*) { return true; })) {
    verbs.push_back(verb->get_name());
  }
  for (const std::string& word : app.remaining()) {
    if (word.starts_with('-')) continue;
    return "no verb \"" + word + '"' + did_you_mean(word, verbs) + "\nSee `gridkit --help`.";
  }
  std::string message = app.remaining().empty() ? "a verb is missing; one of" : error.what();
  if (app.remaining().empty()) {
    for (const std::string& verb : verbs) message += ' ' + verb;
  }
  return message + "\nSee `gridkit --help`.";
}

// Output that does not arrive, on a full disk for one, is a failure.
void flush_output() {
  errno = 0;
  std::cout.flush();
  if (std::cout.good() && std::fflush(stdout) == 0) return;
  throw gridkit::Error("standard output cannot be written: " + gridkit::os_error_in_words(errno));
}

int run(int argc, char** argv) {
  CLI::App app(description, "gridkit");
  shape_help(app);
  app.require_subcommand(1);
  app.footer(footer);
  HostOptions options;
  app.add_option("--plugins", options.plugins, "Folder of the format plug-ins")
      ->type_name("FOLDER");
  app.add_option("--preferences", options.preferences, "File of `group.name = number` lines")
      ->type_name("FILE");
  app.add_flag("--debug", options.debug, "Show the debug channel on standard error");
  Action chosen;
  for (auto* add : {add_formats, add_info, add_layers, add_read, add_quicklook, add_data,
                    add_locate, add_report}) {
    add(app, chosen);
  }
  head_verbs(app);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    if (error.get_exit_code() == 0) return app.exit(error);
    complain(explain(app, error));
    return wrong_use;
  }
  watch_for_interruption();
  const int status = chosen(Host(options));
  flush_output();
  return status;
}

}  // namespace

int main(int argc, char** argv) try { return run(argc, argv); } catch (const Interrupted&) {
  complain("interrupted; what was not complete has been removed");
  end_by_signal();
} catch (const std::bad_alloc&) {
  complain("out of memory");
  return refused;
} catch (const std::exception& error) {
  complain(error.what());
  return refused;
}
