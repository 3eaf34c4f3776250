#include "tools/command_line/program.h"

#include <cerrno>
#include <cstdio>
#include <exception>
#include <iostream>
#include <new>
#include <string>

#include "gridkit/error.h"
#include "gridkit/os_error.h"
#include "gridkit/version.h"
#include "lmx/parser_version.h"
#include "tools/command_line/exit_status.h"
#include "tools/command_line/help.h"
#include "tools/command_line/parse_words.h"
#include "tools/command_line/terminal.h"
#include "tools/command_line/wrong_use.h"

namespace {

std::string version_line(const std::string& program) {
  return program + ' ' + gridkit::version() + " (GDAL " + gridkit::gdal_version() + ", PROJ " +
         gridkit::proj_version() + ", expat " + lmx::parser_version() + ')';
}

// Output that does not arrive, on a full disk for one, is a failure.
void flush_output() {
  errno = 0;
  std::cout.flush();
  if (std::cout.good() && std::fflush(stdout) == 0) return;
  throw gridkit::Error("standard output cannot be written: " + gridkit::os_error_in_words(errno));
}

int parse_and_act(CLI::App& app, int argc, char** argv, const std::function<int()>& action) {
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    if (error.get_exit_code() != 0) {
      complain(app.get_name(), wrong_use_in_words(app, error));
      return exit_wrong_use;
    }
    app.exit(error);  // prints the help or the version
    flush_output();
    return exit_done;
  }
  const int status = action();
  flush_output();
  return status;
}

}  // namespace

void begin_program(CLI::App& app) {
  shape_help(app);
  const std::string name = app.get_name();
  app.set_version_flag(
      "--version", [name] { return version_line(name); },
      "Show the versions of the program and of the libraries in use");
}

int run_program(CLI::App& app, int argc, char** argv, const std::function<int()>& action) try {
  return parse_and_act(app, argc, argv, action);
} catch (const WrongUse& error) {
  complain(app.get_name(), wrong_use_in_words(app, error.what()));
  return exit_wrong_use;
}

int tell_refusal(const char* program) noexcept {
  try {
    try {
      throw;
    } catch (const gridkit::Error& error) {
      complain(program, error.sentence());
    } catch (const std::bad_alloc&) {
      complain(program, "out of memory");
    } catch (const std::exception& error) {
      complain(program, error.what());
    }
  } catch (...) {
    return exit_refused;  // not even that could be told
  }
  return exit_refused;
}
