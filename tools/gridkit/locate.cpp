#include <cmath>
#include <cstdio>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "gridkit/error.h"
#include "rmdllib/placement.h"
#include "tools/annotation/check.h"
#include "tools/annotation/sensor_model_record.h"
#include "tools/command_line/exit_status.h"
#include "tools/command_line/terminal.h"
#include "tools/gridkit/commands.h"
#include "tools/gridkit/place/point_table.h"
#include "tools/gridkit/place/rational_text.h"
#include "tools/gridkit/print_json.h"
#include "tools/gridkit/terminal/terminal.h"

namespace {

using json = nlohmann::ordered_json;

constexpr const char* footer =
    R"(Lines and samples count from 0, and whole numbers are centres of pixels. Places are latitude and
longitude in degrees on WGS 84, heights metres above the ellipsoid. A product in radar geometry is
placed by its annotation alone, so its image files need not be there.

Examples:
  gridkit locate PRODUCT 1200 340
  gridkit locate PRODUCT 1200 340 --height 512
  gridkit locate PRODUCT --ground 48.08 11.28 600
  gridkit locate PRODUCT --check
  gridkit locate PRODUCT --rpc > image_RPC.TXT)";
using rmdllib::Geodetic;
using rmdllib::Pixel;

struct Request {
  std::string path;
  std::optional<double> line;
  std::optional<double> sample;
  std::optional<double> height;
  std::vector<double> ground;  // latitude, longitude, height
  bool check = false;
  bool strict = false;
  bool rpc = false;
  std::vector<double> heights;  // of the rational model: lowest, highest
  bool as_json = false;
};

// A product's annotation, and where its pixels lie.
struct Placed {
  std::string path;
  rmdllib::Placement placement;
};

// Why the images of a valid annotation cannot be read; none where they can, or where it is the
// annotation that is at fault.
std::vector<std::string> faults_of_images(const std::string& path) {
  const CheckResult check = check_leniently(path);
  if (check.error != 0) return {};
  return image_faults(path, check.schema);
}

// Placing needs no pixels: a product whose images are missing is placed by the sensor model that
// its annotation gives, and they are told.
Placed place(const Host& host, const std::string& given) {
  try {
    const gridkit::Product product = host.open(given);
    if (!product.is_over_samples()) return {product.path(), rmdllib::Placement(product)};
    // Without its plug-in nothing publishes the model.
    const auto model = sensor_model_record(product.path());
    if (!model)
      throw gridkit::Error(product.path() + ": its plug-in, which alone tells the map, refuses it");
    return {product.path(), rmdllib::Placement(*model)};
  } catch (const gridkit::Error&) {
    const std::string path = host.find(given);
    const std::vector<std::string> faults = faults_of_images(path);
    if (faults.empty()) throw;
    const auto model = sensor_model_record(path);
    if (!model) throw;
    for (const std::string& fault : faults) warn(fault + "; placing does without");
    return {path, rmdllib::Placement(*model)};
  }
}

// A place in the image and on the ground; a map knows no heights.
void print(const rmdllib::Placement& placement, Pixel pixel, const Geodetic& place, bool has_height,
           bool as_json) {
  const bool inside = placement.contains(pixel);
  if (as_json) {
    print_json({{"line", pixel.line},
                {"sample", pixel.sample},
                {"inside", inside},
                {"latitude", place.latitude_degrees},
                {"longitude", place.longitude_degrees},
                {"height", has_height ? json(place.height) : json(nullptr)}});
    return;
  }
  std::printf("line %.6f  sample %.6f  latitude %.9f  longitude %.9f", pixel.line, pixel.sample,
              place.latitude_degrees, place.longitude_degrees);
  if (has_height) std::printf("  height %.3f", place.height);
  std::printf(inside ? "\n" : "  outside the image\n");
}

// With --strict a place outside the image is refused.
void require_inside(const rmdllib::Placement& placement, Pixel pixel) {
  if (placement.contains(pixel)) return;
  char text[200];
  std::snprintf(text, sizeof text,
                "line %.1f, sample %.1f lies outside the image of %.0f lines and %.0f samples",
                pixel.line, pixel.sample, placement.lines(), placement.samples());
  throw gridkit::Error(text);
}

int locate(const rmdllib::Placement& placement, const Request& request) {
  const auto* radar = placement.radar();
  if (!request.ground.empty()) {
    const Geodetic place = {request.ground[0], request.ground[1], request.ground[2]};
    const Pixel pixel = placement.pixel_of(place);
    if (request.strict) require_inside(placement, pixel);
    print(placement, pixel, place, true, request.as_json);
    return 0;
  }
  if (request.height && radar == nullptr) {
    throw gridkit::Error("an image on a map takes no height");
  }
  const Pixel pixel = {*request.line, *request.sample};
  if (request.strict) require_inside(placement, pixel);
  const double height = request.height.value_or(radar != nullptr ? radar->average_height() : 0);
  print(placement, pixel, placement.ground_of(pixel, height), radar != nullptr, request.as_json);
  return 0;
}

int check(const Placed& product, bool as_json) {
  const auto points = check_scene_points(product.path, product.placement);
  if (as_json) {
    print_json(table_as_json(points, product.placement));
  } else {
    print_table(points, product.placement);
  }
  int status = 0;
  for (const CheckedPoint& point : points) {
    for (const std::string& fault : faults_of(point)) {
      std::fflush(stdout);
      complain("gridkit", product.path + ": " + fault);
      status = exit_refused;
    }
  }
  return status;
}

int show_rational_model(const Placed& product, const Request& request) {
  const auto* radar = product.placement.radar();
  if (radar == nullptr) {
    throw gridkit::Error("an image on a map has a map and no sensor model to fit");
  }
  rmdllib::HeightRange heights;
  if (!request.heights.empty()) heights = {request.heights[0], request.heights[1]};
  const auto fitted = rmdllib::fit_rational_model(*radar, heights);
  if (request.as_json) {
    print_json(rational_model_as_json(fitted));
  } else {
    print_rational_model(fitted);
  }
  if (const std::string remark = remark_on(fitted); !remark.empty()) {
    std::fflush(stdout);
    warn(product.path + ": " + remark);
  }
  return 0;
}

int run(const Host& host, const Request& request) {
  const Placed product = place(host, request.path);
  try {
    if (request.rpc) return show_rational_model(product, request);
    return request.check ? check(product, request.as_json) : locate(product.placement, request);
  } catch (const gridkit::Error& error) {
    throw gridkit::led_by(product.path, error);
  }
}

// Wrong use: numbers that are none, and places that the Earth does not have.
void require_places(const Request& request) {
  const auto require_finite = [](const char* name, double value) {
    if (std::isfinite(value)) return;
    throw CLI::ValidationError(name, "must be a finite number");
  };
  require_finite("LINE", request.line.value_or(0));
  require_finite("SAMPLE", request.sample.value_or(0));
  require_finite("--height", request.height.value_or(0));
  for (const double value : request.heights) require_finite("--heights", value);
  if (!request.heights.empty() && request.heights[0] >= request.heights[1]) {
    throw CLI::ValidationError("--heights", "the lowest comes first, then the highest");
  }
  for (const double value : request.ground) require_finite("--ground", value);
  if (request.ground.empty()) return;
  if (std::abs(request.ground[0]) > 90) {
    throw CLI::ValidationError("--ground", "a latitude lies between -90 and 90 degrees");
  }
  if (std::abs(request.ground[1]) > 360) {
    throw CLI::ValidationError("--ground", "a longitude lies between -360 and 360 degrees");
  }
}

}  // namespace

void add_locate(CLI::App& app, Action& chosen) {
  const auto request = std::make_shared<Request>();
  CLI::App* command = app.add_subcommand(
      "locate",
      "Tell where a pixel lies on Earth, or a place in the image, by the published model");
  command->footer(footer);
  command->add_option("PRODUCT", request->path, product_help)->required();
  auto* line = command->add_option("LINE", request->line, "Line from 0; whole numbers are centres");
  auto* sample = command->add_option("SAMPLE", request->sample, "Sample from 0");
  auto* height = command
                     ->add_option("--height", request->height,
                                  "Metres above the ellipsoid; without it the scene's average")
                     ->type_name("METRES");
  auto* ground = command
                     ->add_option("--ground", request->ground,
                                  "Latitude, longitude in degrees and height in metres")
                     ->expected(3)
                     ->type_name("LATITUDE LONGITUDE HEIGHT");
  auto* check = command->add_flag("--check", request->check,
                                  "Compare the annotation's centre and corners with the model");
  auto* strict = command->add_flag("--strict", request->strict,
                                   "Refuse a pixel or a place that lies outside the image");
  auto* rpc = command->add_flag("--rpc", request->rpc,
                                "Fit rational polynomial coefficients to the sensor model");
  auto* heights =
      command
          ->add_option("--heights", request->heights,
                       "Metres above the ellipsoid that --rpc serves; default -500 9000")
          ->expected(2)
          ->type_name("LOWEST HIGHEST");
  command->add_flag("--json", request->as_json, "As JSON on standard output");
  line->needs(sample)->excludes(ground)->excludes(check);
  height->needs(line);
  ground->excludes(check);
  strict->excludes(check);
  rpc->excludes(line)->excludes(ground)->excludes(check)->excludes(strict);
  heights->needs(rpc);
  command->callback([request, &chosen] {
    if (!request->line && request->ground.empty() && !request->check && !request->rpc) {
      throw CLI::RequiredError("LINE SAMPLE, --ground LATITUDE LONGITUDE HEIGHT, --check or --rpc");
    }
    require_places(*request);
    chosen = [request](const Host& host) { return run(host, *request); };
  });
}
