#include <CLI/CLI.hpp>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <string>
#include <vector>

#include "tools/gridkit/commands.h"
#include "tools/gridkit/host.h"

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

  CLI::App* formats = app.add_subcommand("formats", "List the formats");

  std::string path;
  bool as_json = false;
  CLI::App* info = app.add_subcommand("info", "Show a product and its layers");
  info->add_option("ANNOTATION", path, "The product's annotation")->required();
  info->add_flag("--json", as_json, "As JSON on standard output");

  ReadRequest request;
  bool raw = false;
  std::vector<std::int32_t> block;
  CLI::App* read = app.add_subcommand("read", "Read a layer into an image file");
  read->add_option("ANNOTATION", request.path, "The product's annotation")->required();
  read->add_option("LAYER", request.layer, "A layer's name, as `info` shows it")->required();
  auto* output = read->add_option("OUTPUT", request.output, "Image file to write");
  read->add_option("-f,--format", request.format, "Format; without it by the output's ending")
      ->check(CLI::IsMember(std::vector<std::string>{"GTiff", "PNG"}));
  read->add_option("--window", request.window, "Column, line, width and height")->expected(4);
  read->add_flag("--stretch", request.stretch, "8 bits for the eye, not the pixels' own values");
  read->add_flag("-q,--quiet", request.quiet, "No progress bar");
  auto* raw_flag = read->add_flag("--raw", raw, "One block's pixels to standard output");
  auto* block_option =
      read->add_option("--block", block, "Row and column in the grid of blocks")->expected(2);
  raw_flag->needs(block_option)->excludes(output);
  block_option->needs(raw_flag);

  try {
    app.parse(argc, argv);
    if (read->parsed() && !raw && request.output.empty()) {
      throw CLI::RequiredError("OUTPUT (or --raw --block ROW COLUMN)");
    }
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? 0 : wrong_use;
  }
  const Host host(options);
  if (formats->parsed()) return list_formats(host);
  if (info->parsed()) return show_info(host, path, as_json);
  if (raw) return read_raw_block(host, request.path, request.layer, block[0], block[1]);
  return read_image(host, request);
}

}  // namespace

int main(int argc, char** argv) try {
  return run(argc, argv);
} catch (const std::exception& error) {
  std::fprintf(stderr, "gridkit: %s\n", error.what());
  return refused;
}
