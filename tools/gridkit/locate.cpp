#include <cmath>
#include <cstdio>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "tools/annotation/check.h"
#include "tools/gridkit/commands.h"
#include "tools/gridkit/place/placement.h"
#include "tools/gridkit/place/point_check.h"
#include "tools/gridkit/place/scene_points.h"
#include "tools/gridkit/print_json.h"

namespace {

using json = nlohmann::ordered_json;

constexpr const char* footer =
    R"(Lines and samples count from 0, and whole numbers are centres of pixels. Places are latitude and
longitude in degrees on WGS 84, heights metres above the ellipsoid.

Examples:
  gridkit locate PRODUCT 1200 340
  gridkit locate PRODUCT 1200 340 --height 512
  gridkit locate PRODUCT --ground 48.08 11.28 600
  gridkit locate PRODUCT --check)";
using rmdllib::Geodetic;
using rmdllib::Pixel;

struct Request {
  std::string path;
  std::optional<double> line;
  std::optional<double> sample;
  std::optional<double> height;
  std::vector<double> ground;  // latitude, longitude, height
  bool check = false;
  bool as_json = false;
};

// A point that the check finds farther off is a fault of the product or of its model.
constexpr double largest_miss = 10;  // m
constexpr int refused = 1;

// A place in the image and on the ground; a map knows no heights.
void print(Pixel pixel, const Geodetic& place, bool has_height, bool as_json) {
  if (as_json) {
    json document = {{"line", pixel.line},
                     {"sample", pixel.sample},
                     {"latitude", place.latitude},
                     {"longitude", place.longitude}};
    document["height"] = has_height ? json(place.height) : json(nullptr);
    print_json(document);
    return;
  }
  std::printf("line %.6f  sample %.6f  latitude %.9f  longitude %.9f", pixel.line, pixel.sample,
              place.latitude, place.longitude);
  if (has_height) std::printf("  height %.3f", place.height);
  std::printf("\n");
}

int locate(const Placement& placement, const Request& request) {
  const auto* radar = placement.radar();
  if (!request.ground.empty()) {
    const Geodetic place = {request.ground[0], request.ground[1], request.ground[2]};
    print(placement.pixel_of(place), place, true, request.as_json);
    return 0;
  }
  if (request.height && radar == nullptr) {
    throw gridkit::Error("an image on a map takes no height");
  }
  const Pixel pixel = {*request.line, *request.sample};
  const double height = request.height.value_or(radar != nullptr ? radar->average_height() : 0);
  print(pixel, placement.ground_of(pixel, height), radar != nullptr, request.as_json);
  return 0;
}

struct CheckedPoint {
  ScenePoint stated;
  PointCheck result;
};

void print_as_json(const std::vector<CheckedPoint>& points, const Placement& placement) {
  json list = json::array();
  for (const auto& [stated, result] : points) {
    json entry = {{"point", stated.name},
                  {"line", stated.pixel->line},
                  {"sample", stated.pixel->sample},
                  {"latitude", stated.latitude},
                  {"longitude", stated.longitude}};
    entry["height"] = placement.radar() != nullptr ? json(result.height) : json(nullptr);
    entry["along"] = result.along;
    entry["across"] = result.across;
    entry["atAverageHeight"] = result.at_average_height;
    list.push_back(entry);
  }
  print_json(list);
}

// For a table of three decimals: what rounds to 0 is shown without a sign.
double unsigned_zero(double metres) {
  return std::abs(metres) < 0.0005 ? 0.0 : metres;
}

void print_as_text(const std::vector<CheckedPoint>& points, const Placement& placement) {
  const auto* radar = placement.radar();
  if (radar == nullptr) {
    std::printf("%-10s %9s %9s %12s %12s %9s %9s\n", "point", "line", "sample", "latitude",
                "longitude", "north m", "east m");
  } else {
    std::printf("scene's average height %.1f m\n", radar->average_height());
    std::printf("%-10s %9s %9s %12s %12s %9s %9s %9s %17s\n", "point", "line", "sample", "latitude",
                "longitude", "height m", "along m", "across m", "at average height");
  }
  for (const auto& [stated, result] : points) {
    std::printf("%-10s %9.1f %9.1f %12.6f %12.6f", stated.name.c_str(), stated.pixel->line,
                stated.pixel->sample, stated.latitude, stated.longitude);
    if (radar != nullptr) std::printf(" %9.1f", result.height);
    std::printf(" %9.3f %9.3f", unsigned_zero(result.along), unsigned_zero(result.across));
    if (radar != nullptr) std::printf(" %15.1f m", result.at_average_height);
    std::printf("\n");
  }
}

int check(const gridkit::Product& product, const Placement& placement, const Request& request) {
  const std::string schema = check_annotation(product.path()).schema;
  std::vector<CheckedPoint> points;
  for (const ScenePoint& stated : read_scene_points(product.path(), schema)) {
    if (!stated.pixel) continue;
    const Pixel pixel = {stated.pixel->line, stated.pixel->sample};
    points.push_back({stated, placement.radar() != nullptr
                                  ? check_point(*placement.radar(), pixel, stated)
                                  : check_point(placement, pixel, stated)});
  }
  if (points.empty()) {
    throw gridkit::Error("its centre and corner coordinates name no row and column to check");
  }
  if (request.as_json) {
    print_as_json(points, placement);
  } else {
    print_as_text(points, placement);
  }
  int status = 0;
  for (const auto& [stated, result] : points) {
    if (result.miss() <= largest_miss) continue;
    std::fflush(stdout);
    std::fprintf(stderr, "gridkit: %s: %s lies %.1f m from its pixel at any terrain height\n",
                 product.path().c_str(), stated.name.c_str(), result.miss());
    status = refused;
  }
  return status;
}

int run(const Host& host, const Request& request) {
  const gridkit::Product product = host.open(request.path);
  const Placement placement(product);
  try {
    return request.check ? check(product, placement, request) : locate(placement, request);
  } catch (const gridkit::Error& error) {
    throw gridkit::Error(product.path() + ": " + error.what());
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
  command->add_flag("--json", request->as_json, "As JSON on standard output");
  line->needs(sample)->excludes(ground)->excludes(check);
  height->needs(line);
  ground->excludes(check);
  command->callback([request, &chosen] {
    if (!request->line && request->ground.empty() && !request->check) {
      throw CLI::RequiredError("LINE SAMPLE, --ground LATITUDE LONGITUDE HEIGHT, or --check");
    }
    chosen = [request](const Host& host) { return run(host, *request); };
  });
}
