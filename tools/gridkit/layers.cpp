#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>

#include "tools/gridkit/commands.h"
#include "tools/gridkit/print_json.h"

namespace {

using json = nlohmann::ordered_json;

constexpr const char* footer = R"(Examples:
  gridkit layers PRODUCT
  for layer in $(gridkit layers PRODUCT); do gridkit read PRODUCT $layer $layer.tif; done
  gridkit layers --json PRODUCT)";

struct Request {
  std::string path;
  bool as_json = false;
};

void print_as_json(const gridkit::Product& product) {
  json list = json::array();
  for (const std::string& name : product.layer_names()) {
    const gridkit::Layer layer = product.open_layer(name);
    list.push_back({{"name", name},
                    {"pixelType", layer.pixel_type()},
                    {"width", layer.width()},
                    {"height", layer.height()}});
  }
  print_json(list);
}

int list_layers(const Host& host, const Request& request) {
  const gridkit::Product product = host.open(request.path);
  if (request.as_json) {
    print_as_json(product);
    return 0;
  }
  for (const std::string& name : product.layer_names()) std::cout << name << '\n';
  return 0;
}

}  // namespace

void add_layers(CLI::App& app, Action& chosen) {
  const auto request = std::make_shared<Request>();
  CLI::App* command =
      app.add_subcommand("layers", "List the names of a product's layers, one a line");
  command->footer(footer);
  command->add_option("PRODUCT", request->path, product_help)->required();
  command->add_flag("--json", request->as_json,
                    "Names, types of pixels and sizes as JSON on standard output");
  command->callback([request, &chosen] {
    chosen = [request](const Host& host) { return list_layers(host, *request); };
  });
}
