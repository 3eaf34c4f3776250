#include <filesystem>
#include <iomanip>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "gridkit/image_radiometry.h"
#include "gridkit/info_json.h"
#include "gridkit/layer_map.h"
#include "gridkit/product_facts.h"
#include "tools/command_line/exit_status.h"
#include "tools/gridkit/commands.h"
#include "tools/gridkit/product/image_warning.h"
#include "tools/gridkit/product/product_summary.h"
#include "tools/gridkit/product/words.h"
#include "tools/gridkit/terminal/terminal.h"

namespace {

constexpr const char* footer =
    R"(Lines come before samples. A name under `layers` is what `gridkit read` takes, one under `data`
what `gridkit data` takes. The calibration factor of each image turns squares of its digital numbers
into radar brightness. With --json comes all of it, and the blocks of the layers.

Where image files are missing, what the annotation says is shown, then the files; exit status 1.

Examples:
  gridkit info PRODUCT
  gridkit info --json PRODUCT | jq '.layers[].name')";

void print_row(const std::string& label, const std::string& text) {
  std::cout << "  " << std::left << std::setw(13) << label << ' ' << text << '\n';
}

std::string in_metres(double value) {
  return number_in_words(value, 3);
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

void print_heading(const std::string& text) {
  std::cout << on_output(text, Style::bold) << '\n';
}

void print_facts(const std::string& format, const std::string& annotation,
                 const std::optional<gridkit::ProductFacts>& facts) {
  print_heading(std::filesystem::path(annotation).stem().string());
  print_row("format", format);
  if (!facts) return;
  for (const SummaryRow& row : summary_of(*facts)) print_row(row.label, row.text);
}

void print_layer(const gridkit::Layer& layer) {
  std::cout << "  " << std::left << std::setw(22) << layer.name() << ' ' << std::right
            << std::setw(6) << layer.height() << " lines x " << std::setw(6) << layer.width()
            << " samples  " << type_as_text(layer.pixel_type()) << '\n';
  const gridkit::LayerMap map = gridkit::map_of(layer);
  if (map.info) std::cout << "    map: " << map_as_text(layer, *map.info) << '\n';
}

// Nothing where nothing tells the angles, as of images on a map.
void print_incidence(const gridkit::Product& product) try {
  const gridkit::ImageIncidence incidence = incidence_of(product);
  print_row("incidence", number_in_words(incidence.near_degrees, 2) + " to " +
                             number_in_words(incidence.far_degrees, 2) +
                             " degrees, near to far range (" + incidence.angles->source() + ')');
} catch (const gridkit::Error&) {
  return;
}

void print_as_text(const gridkit::Product& product) {
  print_facts(product.title(), product.path(), gridkit::facts_of(product));
  print_incidence(product);
  print_heading("layers");
  for (const std::string& name : product.layer_names()) print_layer(product.open_layer(name));
  const auto data = product.data_names();
  if (!data.empty()) print_heading("data");
  for (const std::string& name : data) std::cout << "  " << name << '\n';
}

struct Request {
  std::string path;
  bool as_json = false;
};

// Tells what is wrong without making the product useless, and gives it as texts.
std::vector<std::string> tell_warnings(const gridkit::Product& product) {
  std::vector<std::string> warnings = image_disagreements(product.path());
  warn_about_images(warnings);
  for (const std::string& name : product.layer_names()) {
    const gridkit::LayerMap map = gridkit::map_of(product.open_layer(name));
    if (map.not_known.empty()) continue;
    warnings.push_back(map.not_known);
    warn(map.not_known);
  }
  const auto passed_over = product.passed_over();
  warnings.insert(warnings.end(), passed_over.begin(), passed_over.end());  // told by the host
  return warnings;
}

int show(const Host& host, const Request& request) try {
  const gridkit::Product product = host.open(request.path);
  const std::vector<std::string> warnings = tell_warnings(product);
  if (request.as_json) {
    std::cout << gridkit::info_as_json(product, warnings) << '\n';
  } else {
    print_as_text(product);
  }
  return exit_done;
} catch (const MissingImages& missing) {
  if (!request.as_json) print_facts(missing.format(), missing.annotation(), missing.facts());
  throw;
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
