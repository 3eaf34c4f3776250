#include <iomanip>
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>

#include "tools/gridkit/commands.h"
#include "tools/gridkit/image_warning.h"

namespace {

using json = nlohmann::ordered_json;

json map_as_json(const std::optional<gridkit::MapInfo>& map) {
  if (!map) return nullptr;
  return {{"projection", map->projection},
          {"upperLeft", {map->upper_left[0], map->upper_left[1]}},
          {"pixelSize", {map->pixel_size[0], map->pixel_size[1]}},
          {"units", map->units}};
}

json layer_as_json(const gridkit::Layer& layer) {
  return {{"name", layer.name()},
          {"pixelType", layer.pixel_type()},
          {"layerType", layer.layer_type()},
          {"width", layer.width()},
          {"height", layer.height()},
          {"blockWidth", layer.block_width()},
          {"blockHeight", layer.block_height()},
          {"mapInfo", map_as_json(layer.map_info())}};
}

void print_as_json(const gridkit::Product& product) {
  json layers = json::array();
  for (const std::string& name : product.layer_names()) {
    layers.push_back(layer_as_json(product.open_layer(name)));
  }
  const json info = {{"format", product.title()},
                     {"description", product.plugin().format().description},
                     {"file", product.path()},
                     {"layers", layers},
                     {"data", product.data_names()}};
  std::cout << info.dump(2, ' ', false, json::error_handler_t::replace) << '\n';
}

void print_as_text(const gridkit::Product& product) {
  std::cout << product.path() << '\n' << "format: " << product.title() << '\n' << "layers:\n";
  for (const std::string& name : product.layer_names()) {
    const gridkit::Layer layer = product.open_layer(name);
    std::cout << "  " << std::left << std::setw(22) << name << std::right << std::setw(7)
              << layer.width() << " x " << std::left << std::setw(7) << layer.height()
              << layer.pixel_type() << ", blocks of " << layer.block_width() << " x "
              << layer.block_height() << '\n';
    if (const auto map = layer.map_info()) {
      std::cout << "    map: " << map->projection << std::fixed << std::setprecision(3)
                << ", upper left " << map->upper_left[0] << ", " << map->upper_left[1]
                << ", pixels of " << map->pixel_size[0] << " x " << map->pixel_size[1] << ' '
                << map->units << '\n';
    }
  }
  for (const std::string& name : product.data_names()) std::cout << "data: " << name << '\n';
}

struct Request {
  std::string path;
  bool as_json = false;
};

int show(const Host& host, const Request& request) {
  const gridkit::Product product = host.open(request.path);
  warn_about_images(product.path());
  if (request.as_json) {
    print_as_json(product);
  } else {
    print_as_text(product);
  }
  return 0;
}

}  // namespace

void add_info(CLI::App& app, Action& chosen) {
  const auto request = std::make_shared<Request>();
  CLI::App* command = app.add_subcommand("info", "Show a product and its layers");
  command->add_option("ANNOTATION", request->path, "The product's annotation")->required();
  command->add_flag("--json", request->as_json, "As JSON on standard output");
  command->callback([request, &chosen] {
    chosen = [request](const Host& host) { return show(host, *request); };
  });
}
