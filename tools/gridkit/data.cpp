#include <algorithm>
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <type_traits>
#include <variant>
#include <vector>

#include "gridkit/record_decoder.h"
#include "tools/command_line/suggestion.h"
#include "tools/gridkit/commands.h"
#include "tools/gridkit/print_json.h"

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

json value_as_json(const gridkit::DecodedField& field) {
  return std::visit(
      [](const auto& value) -> json {
        using Value = std::decay_t<decltype(value)>;
        if constexpr (std::is_same_v<Value, gridkit::EnumerationItem>) return value.text;
        if constexpr (std::is_same_v<Value, char>) return std::string(1, value);
        if constexpr (!std::is_same_v<Value, gridkit::EnumerationItem> &&
                      !std::is_same_v<Value, char>) {
          return value;
        }
      },
      field.value);
}

// Plug-ins may take other names for the listed ones, or answer for data that a product does not
// have, so only listed names are asked for.
gridkit::NonStandardData find(const gridkit::Product& product, const std::string& name) {
  const auto names = product.data_names();
  if (std::find(names.begin(), names.end(), name) != names.end()) {
    if (auto data = product.read_data(name)) return *data;
  }
  std::string message =
      product.path() + ": no data of the name \"" + name + '"' + did_you_mean(name, names);
  message += names.empty() ? "; it has none" : "\n  the data are";
  for (const std::string& offered : names) message += " " + offered;
  throw gridkit::Error(message);
}

std::string dump(const json& value) {
  return value.dump(-1, ' ', false, json::error_handler_t::replace);
}

int show(const Host& host, const Request& request) {
  const gridkit::Product product = host.open(request.path);
  const gridkit::NonStandardData data = find(product, request.name);
  const auto fields = gridkit::decode_record(data.dictionary, data.type, data.bytes);
  json value = json::object();
  for (const gridkit::DecodedField& field : fields) value[field.name] = value_as_json(field);
  if (!request.as_json) {
    std::cout << data.type << ", " << data.bytes.size() << " bytes\n";
    for (const auto& [name, content] : value.items()) {
      std::cout << "  " << name << " = " << dump(content) << '\n';
    }
    return 0;
  }
  const json document = {{"name", request.name},
                         {"type", data.type},
                         {"dictionary", data.dictionary},
                         {"size", data.bytes.size()},
                         {"value", value}};
  print_json(document);
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
