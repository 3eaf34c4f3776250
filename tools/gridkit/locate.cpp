#include <cmath>
#include <cstdio>
#include <memory>
#include <nlohmann/json.hpp>
#include <numbers>
#include <optional>
#include <string>
#include <vector>

#include "gridkit/error.h"
#include "gridkit/geolocation_grid.h"
#include "rmdllib/incidence.h"
#include "rmdllib/placement.h"
#include "tools/annotation/check.h"
#include "tools/annotation/sensor_model_record.h"
#include "tools/command_line/exit_status.h"
#include "tools/command_line/terminal.h"
#include "tools/gridkit/commands.h"
#include "tools/gridkit/place/grid_check.h"
#include "tools/gridkit/place/point_table.h"
#include "tools/gridkit/place/rational_text.h"
#include "tools/gridkit/print_json.h"
#include "tools/gridkit/terminal/terminal.h"

namespace {

using json = nlohmann::ordered_json;

constexpr const char* footer =
    R"(Lines and samples count from 0, and whole numbers are centres of pixels. Places are latitude and
longitude in degrees on WGS 84, heights metres above the ellipsoid. A product in radar geometry is
placed by its annotation alone, so its image files need not be there; where it has a geolocation grid
the signal delays and the azimuth shift that the grid tells are applied.

Examples:
  gridkit locate PRODUCT 1200 340
  gridkit locate PRODUCT 1200 340 --height 512
  gridkit locate PRODUCT 1200 340 --height terrain
  gridkit locate PRODUCT --ground 48.08 11.28 600
  gridkit locate PRODUCT --check
  gridkit locate PRODUCT --rpc > image_RPC.TXT)";
using rmdllib::Geodetic;
using rmdllib::Pixel;

constexpr const char* terrain_height = "terrain";

struct Request {
  std::string path;
  std::optional<double> line;
  std::optional<double> sample;
  std::string height_text;       // metres or "terrain"; empty: the scene's average
  std::optional<double> height;  // where that is a number
  std::vector<double> ground;    // latitude, longitude, height
  bool check = false;
  bool strict = false;
  bool rpc = false;
  bool no_delays = false;
  std::vector<double> heights;  // of the rational model: lowest, highest
  bool as_json = false;

  bool at_terrain() const { return height_text == terrain_height; }
  bool needs_grid() const { return !no_delays || check || at_terrain(); }
};

// A product's annotation, and where its pixels lie.
struct Placed {
  std::string path;
  rmdllib::Placement placement;
  std::shared_ptr<const gridkit::GeolocationGrid> grid;  // null where there is none
  bool delays = false;                                   // whether the grid's are applied
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
    return {product.path(), rmdllib::Placement(product), nullptr, false};
  } catch (const gridkit::Error&) {
    const std::string path = host.find(given);
    const std::vector<std::string> faults = faults_of_images(path);
    if (faults.empty()) throw;
    const auto model = sensor_model_record(path);
    if (!model) throw;
    for (const std::string& fault : faults) warn(fault + "; placing does without");
    return {path, rmdllib::Placement(*model), nullptr, false};
  }
}

gridkit::FoundGrid find_grid(const Host& host, const std::string& path) {
  for (const auto& plugin : host.plugins()) {
    if (plugin->identify(path)) return gridkit::find_geolocation_grid(*plugin, path);
  }
  return {};
}

// Adds a product's geolocation grid, and its corrections unless they are to be left out. A map
// needs none.
void take_grid(const Host& host, const Request& request, Placed& placed) {
  if (placed.placement.radar() == nullptr || !request.needs_grid()) return;
  const gridkit::FoundGrid found = find_grid(host, placed.path);
  if (!found.warning.empty()) {
    warn(found.warning + "; the geolocation grid is not used, and no delays are applied");
  }
  placed.grid = found.grid;
  if (found.grid == nullptr || request.no_delays) return;
  placed.placement.apply(rmdllib::corrections_of(*found.grid));
  placed.delays = true;
}

// The angle of incidence of a pixel, in degrees: the grid's, as calibration takes it, where no
// height is asked for; else the sensor model's at the place.
std::optional<double> incidence_at(const Placed& product, const Request& request, Pixel pixel,
                                   double height) {
  const auto* radar = product.placement.radar();
  if (radar == nullptr) return std::nullopt;
  const bool takes_grid = product.grid != nullptr && product.grid->has_image_axes() &&
                          !request.height && request.ground.empty() &&
                          product.placement.contains(pixel);
  if (takes_grid) return product.grid->incidence_at(pixel.line, pixel.sample);
  return rmdllib::incidence_angle(*radar, pixel, height) * 180 / std::numbers::pi;
}

// A place in the image and on the ground; a map knows no heights.
void print(const Placed& product, const Request& request, Pixel pixel, const Geodetic& place,
           bool has_height) {
  const bool inside = product.placement.contains(pixel);
  const std::optional<double> incidence = incidence_at(product, request, pixel, place.height);
  if (request.as_json) {
    print_json({{"line", pixel.line},
                {"sample", pixel.sample},
                {"inside", inside},
                {"latitude", place.latitude_degrees},
                {"longitude", place.longitude_degrees},
                {"height", has_height ? json(place.height) : json(nullptr)},
                {"incidence", incidence ? json(*incidence) : json(nullptr)},
                {"delays", product.delays}});
    return;
  }
  std::printf("line %.6f  sample %.6f  latitude %.9f  longitude %.9f", pixel.line, pixel.sample,
              place.latitude_degrees, place.longitude_degrees);
  if (has_height) std::printf("  height %.3f", place.height);
  if (incidence) std::printf("  incidence %.4f", *incidence);
  if (product.delays) std::printf("  delays applied");
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

// The height at which a pixel is placed.
double height_at(const Placed& product, const Request& request, Pixel pixel) {
  const auto* radar = product.placement.radar();
  if (!request.height_text.empty() && radar == nullptr) {
    throw gridkit::Error("an image on a map takes no height");
  }
  if (!request.at_terrain()) {
    return request.height.value_or(radar != nullptr ? radar->average_height() : 0);
  }
  if (product.grid == nullptr || !product.grid->has_image_axes()) {
    throw gridkit::Error("it has no geolocation grid, which alone tells the terrain's height");
  }
  // Beyond the grid nothing is known of the terrain.
  require_inside(product.placement, pixel);
  return product.grid->height_at(pixel.line, pixel.sample);
}

int locate(const Placed& product, const Request& request) {
  const rmdllib::Placement& placement = product.placement;
  if (!request.ground.empty()) {
    const Geodetic place = {request.ground[0], request.ground[1], request.ground[2]};
    const Pixel pixel = placement.pixel_of(place);
    if (request.strict) require_inside(placement, pixel);
    print(product, request, pixel, place, true);
    return 0;
  }
  const Pixel pixel = {*request.line, *request.sample};
  if (request.strict) require_inside(placement, pixel);
  const double height = height_at(product, request, pixel);
  print(product, request, pixel, placement.ground_of(pixel, height), placement.radar() != nullptr);
  return 0;
}

// What is said of the corrections ahead of a table.
void print_corrections(const Placed& product) {
  if (!product.delays) return;
  const rmdllib::SignalCorrections& applied = product.placement.radar()->corrections();
  std::printf("delays applied: %.3f ns in range time, %.1f us in azimuth time\n",
              1e9 * applied.range_delay, 1e6 * applied.azimuth_shift);
}

int check(const Placed& product, bool as_json) {
  const auto points = check_scene_points(product.path, product.placement);
  std::optional<GridCheck> grid;
  if (product.grid != nullptr) grid = check_grid(*product.placement.radar(), *product.grid);
  if (as_json) {
    print_json({{"delays", product.delays},
                {"points", table_as_json(points, product.placement)},
                {"grid", grid ? grid_as_json(*grid) : json(nullptr)}});
  } else {
    print_corrections(product);
    print_table(points, product.placement);
    if (grid) print_grid(*grid);
  }
  std::vector<std::string> faults;
  for (const CheckedPoint& point : points) {
    for (const std::string& fault : faults_of(point)) faults.push_back(fault);
  }
  if (grid) {
    if (const std::string fault = fault_of(*grid); !fault.empty()) faults.push_back(fault);
  }
  std::fflush(stdout);
  for (const std::string& fault : faults) complain("gridkit", product.path + ": " + fault);
  return faults.empty() ? 0 : exit_refused;
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
    print_json(rational_model_as_json(fitted, product.delays));
  } else {
    print_rational_model(fitted, product.delays);
  }
  if (const std::string remark = remark_on(fitted); !remark.empty()) {
    std::fflush(stdout);
    warn(product.path + ": " + remark);
  }
  return 0;
}

int run(const Host& host, const Request& request) {
  Placed product = place(host, request.path);
  take_grid(host, request, product);
  try {
    if (request.rpc) return show_rational_model(product, request);
    return request.check ? check(product, request.as_json) : locate(product, request);
  } catch (const gridkit::Error& error) {
    throw gridkit::led_by(product.path, error);
  }
}

// The number that was given for a height; "terrain" is none.
void read_height(Request& request) {
  if (request.height_text.empty() || request.at_terrain()) return;
  double height = 0;
  if (!CLI::detail::lexical_cast(request.height_text, height)) {
    throw CLI::ValidationError("--height", "must be a number of metres, or terrain");
  }
  request.height = height;
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
  auto* height =
      command
          ->add_option("--height", request->height_text,
                       "Metres above the ellipsoid, or `terrain`, the height that the geolocation "
                       "grid has there; without it the scene's average")
          ->type_name("METRES");
  auto* ground = command
                     ->add_option("--ground", request->ground,
                                  "Latitude, longitude in degrees and height in metres")
                     ->expected(3)
                     ->type_name("LATITUDE LONGITUDE HEIGHT");
  auto* check =
      command->add_flag("--check", request->check,
                        "Compare the annotation's centre and corners, and the geolocation "
                        "grid, with the model");
  command->add_flag("--no-delays", request->no_delays,
                    "Leave out the signal delays that the geolocation grid tells");
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
    read_height(*request);
    require_places(*request);
    chosen = [request](const Host& host) { return run(host, *request); };
  });
}
