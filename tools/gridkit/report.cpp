#include <cstdint>
#include <memory>
#include <span>
#include <string>

#include "gridkit/whole_file.h"
#include "tools/command_line/help.h"
#include "tools/gridkit/commands.h"
#include "tools/gridkit/picture/quicklook.h"
#include "tools/gridkit/product/image_warning.h"
#include "tools/gridkit/read/output_file.h"
#include "tools/gridkit/report/page.h"
#include "tools/gridkit/terminal/progress.h"

namespace {

constexpr std::int32_t largest_shown = 2048;  // of the pictures in a page

constexpr const char* footer =
    R"(Pictures, footprint, curves, sensor model, calibration and the whole annotation, to be read in a
browser. The page asks for nothing outside itself.

Example:
  gridkit report PRODUCT report.html)";

struct Request {
  std::string product;
  std::string output;
  std::int32_t size = 720;
  bool overwrite = false;
  bool quiet = false;
};

std::int64_t lines_of_all_layers(const gridkit::Product& product) {
  std::int64_t lines = 0;
  for (const std::string& layer : product.layer_names())
    lines += product.open_layer(layer).height();
  return lines;
}

int save_report(const Host& host, const Request& request) {
  const gridkit::Product product = host.open(request.product);
  check_output(request.output, OutputFormat::png, request.overwrite, product);
  check_images_to_read(product.path());
  const std::string page = [&] {
    Progress progress(lines_of_all_layers(product), request.quiet);
    return report::make_page(product, request.size,
                             [&](std::int32_t lines) { progress.advance(lines); });
  }();
  gridkit::write_whole_file(request.output, std::as_bytes(std::span(page)), request.overwrite);
  return 0;
}

}  // namespace

void add_report(CLI::App& app, Action& chosen) {
  const auto request = std::make_shared<Request>();
  CLI::App* command = app.add_subcommand(
      "report", "Tell all about a product in one HTML page that stands by itself");
  command->footer(footer);
  command->add_option("PRODUCT", request->product, product_help)->required();
  command->add_option("OUT.html", request->output, "The page to write")->required();
  take_range(command
                 ->add_option("--size", request->size,
                              "Most pixels of a picture on its longer side, " +
                                  std::to_string(smallest_picture) + " to " +
                                  std::to_string(largest_shown))
                 ->capture_default_str(),
             "PIXELS", smallest_picture, largest_shown);
  command->add_flag("--overwrite", request->overwrite, "Replace an output that exists");
  command->add_flag("-q,--quiet", request->quiet, "No progress bar");
  command->callback([request, &chosen] {
    chosen = [request](const Host& host) { return save_report(host, *request); };
  });
}
