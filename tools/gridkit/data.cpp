#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>

#include "gridkit/record_json.h"
#include "tools/command_line/suggestion.h"
#include "tools/gridkit/commands.h"

namespace {

using json = nlohmann::ordered_json;

constexpr const char* footer =
    R"(The record is taken apart by the dictionary that comes with it: every field by its name, enumerations
as their texts. With --json come the dictionary and the size too, and numbers that read back bit for
bit.

Examples:
  gridkit data PRODUCT :TSX_Beta0
  gridkit data --json PRODUCT :RADAR_Generic_v2.2 | jq .value.near_slant_range)";

struct Request {
  std::string path;
  std::string name;
  bool as_json = false;
};

gridkit::NonStandardData find(const gridkit::Product& product, const std::string& name) {
  if (auto data = gridkit::read_listed_data(product, name)) return *data;
  const auto names = product.data_names();
  std::string message =
      product.path() + ": no data of the name \"" + name + '"' + did_you_mean(name, names);
  message += names.empty() ? "; it has none" : "\n  the data are";
  for (const std::string& offered : names) message += " " + offered;
  throw gridkit::Error(message);
}

int show(const Host& host, const Request& request) {
  const gridkit::Product product = host.open(request.path);
  const gridkit::NonStandardData data = find(product, request.name);
  const std::string document = gridkit::record_as_json(request.name, data);
  if (request.as_json) {
    std::cout << document << '\n';
    return 0;
  }
  std::cout << data.type << ", " << data.bytes.size() << " bytes\n";
  const json value = json::parse(document).at("value");
  for (const auto& [name, content] : value.items()) {
    std::cout << "  " << name << " = " << content.dump() << '\n';
  }
  return 0;
}

}  // namespace

void add_data(CLI::App& app, Action& chosen) {
  const auto request = std::make_shared<Request>();
  CLI::App* command = app.add_subcommand("data", "Show the data beside the pixels, decoded");
  command->footer(footer);
  command->add_option("PRODUCT", request->path, product_help)->required();
  command->add_option("NAME", request->name, "The data's name, as `gridkit info` shows it")
      ->required();
  command->add_flag("--json", request->as_json, "As JSON on standard output");
  command->callback([request, &chosen] {
    chosen = [request](const Host& host) { return show(host, *request); };
  });
}
