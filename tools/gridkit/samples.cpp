#include "gridkit/samples.h"

#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>

#include "tools/gridkit/commands.h"
#include "tools/gridkit/print_json.h"

namespace {

using json = nlohmann::ordered_json;

constexpr const char* footer =
    R"(One image a line: its name, its size, the type of its samples and its file. Types:
  cs16  complex, pairs of 16-bit integers
  cf32  complex, pairs of floating-point numbers (in the file of half precision)
  u16   amplitudes of a detected image

Where a file holds several bursts, each is an image of its own.

Examples:
  gridkit samples PRODUCT
  gridkit samples --json PRODUCT)";

struct Request {
  std::string path;
  bool as_json = false;
};

// As they are delivered: half-precision numbers as floats.
const char* type_name(gridkit::NativeType type) {
  switch (type) {
    case gridkit::NativeType::complex_int16:
      return "cs16";
    case gridkit::NativeType::complex_half:
      return "cf32";
    case gridkit::NativeType::uint16:
      return "u16";
  }
  return "";
}

void print_as_json(const gridkit::Samples& samples) {
  json list = json::array();
  for (const gridkit::SampleImage& image : samples.images()) {
    list.push_back({{"name", image.name},
                    {"polarisation", image.polarisation},
                    {"lines", image.lines},
                    {"samples", image.samples},
                    {"type", type_name(image.type)},
                    {"burst", image.burst ? json(*image.burst) : json(nullptr)},
                    {"file", image.file}});
  }
  print_json(list);
}

int list_samples(const Host& host, const Request& request) {
  const gridkit::Product product = host.open(request.path);
  const gridkit::Samples samples = product.samples();
  if (request.as_json) {
    print_as_json(samples);
    return 0;
  }
  for (const gridkit::SampleImage& image : samples.images()) {
    std::cout << image.name << "  " << image.lines << " lines x " << image.samples << " samples  "
              << type_name(image.type) << "  " << image.file << '\n';
  }
  return 0;
}

}  // namespace

void add_samples(CLI::App& app, Action& chosen) {
  const auto request = std::make_shared<Request>();
  CLI::App* command =
      app.add_subcommand("samples", "List the images of a product whose samples can be read");
  command->footer(footer);
  command->add_option("PRODUCT", request->path, product_help)->required();
  command->add_flag("--json", request->as_json,
                    "Names, sizes, types, bursts and files as JSON on standard output");
  command->callback([request, &chosen] {
    chosen = [request](const Host& host) { return list_samples(host, *request); };
  });
}
