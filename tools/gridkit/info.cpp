#include <filesystem>
#include <iomanip>
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <sstream>
#include <string>

#include "tools/gridkit/commands.h"
#include "tools/gridkit/print_json.h"
#include "tools/gridkit/product/image_warning.h"
#include "tools/gridkit/product/product_summary.h"
#include "tools/gridkit/terminal/terminal.h"

namespace {

using json = nlohmann::ordered_json;

constexpr const char* footer =
    R"(Sizes are columns x lines. A name under `layers` is what `gridkit read` takes, one under `data`
what `gridkit data` takes. With --json come the format, the file, all layers with their blocks and
map data, and the names of the data.

Examples:
  gridkit info PRODUCT
  gridkit info --json PRODUCT | jq '.layers[].name')";

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
  print_json(info);
}

void print_row(const std::string& label, const std::string& text) {
  std::cout << "  " << std::left << std::setw(13) << label << ' ' << text << '\n';
}

std::string in_metres(double value) {
  std::ostringstream text;
  text << std::fixed << std::setprecision(3) << value;
  return text.str();
}

// "UTM zone 32N, WGS 84", or the projection's name alone where it is no UTM.
std::string projection_as_text(const gridkit::Layer& layer, const gridkit::MapInfo& map) try {
  const auto projection = layer.map_projection();
  if (!projection || projection->name != "UTM") return map.projection;
  return map.projection + " zone " + projection->value(4).value_or("") +
         projection->value(5).value_or("") + ", " + projection->value(2).value_or("");
} catch (const gridkit::Error&) {
  return map.projection;  // one that has no parameters to tell is shown all the same
}

std::string map_as_text(const gridkit::Layer& layer, const gridkit::MapInfo& map) {
  return projection_as_text(layer, map) + ", upper left " + in_metres(map.upper_left[0]) + ", " +
         in_metres(map.upper_left[1]) + ", pixels of " + in_metres(map.pixel_size[0]) + " x " +
         in_metres(map.pixel_size[1]) + ' ' + map.units;
}

// What is known of the pixels of a type.
std::string type_as_text(const std::string& type) {
  if (type == "u16") return "16 bits unsigned";
  if (type == "s16") return "16 bits signed";
  return type;
}

void print_as_text(const gridkit::Product& product) {
  std::cout << on_output(std::filesystem::path(product.path()).stem().string(), Style::bold)
            << '\n';
  print_row("format", product.title());
  for (const SummaryRow& row : summary_of(product.path())) print_row(row.label, row.text);
  std::cout << on_output("layers", Style::bold) << '\n';
  for (const std::string& name : product.layer_names()) {
    const gridkit::Layer layer = product.open_layer(name);
    std::cout << "  " << std::left << std::setw(22) << name << ' ' << std::right << std::setw(6)
              << layer.width() << " x " << std::left << std::setw(6) << layer.height() << "  "
              << type_as_text(layer.pixel_type()) << '\n';
    if (const auto own = layer.map_info())
      std::cout << "    map: " << map_as_text(layer, *own) << '\n';
  }
  const auto data = product.data_names();
  if (!data.empty()) std::cout << on_output("data", Style::bold) << '\n';
  for (const std::string& name : data) std::cout << "  " << name << '\n';
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
  CLI::App* command = app.add_subcommand(
      "info", "Show at a glance what a product is, where and when it was taken, and what is in it");
  command->footer(footer);
  command->add_option("PRODUCT", request->path, product_help)->required();
  command->add_flag("--json", request->as_json, "As JSON on standard output");
  command->callback([request, &chosen] {
    chosen = [request](const Host& host) { return show(host, *request); };
  });
}
