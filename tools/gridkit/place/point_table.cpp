#include "tools/gridkit/place/point_table.h"

#include <cmath>
#include <cstdio>

#include "gridkit/error.h"
#include "tools/annotation/check.h"

namespace {

using json = nlohmann::ordered_json;

// What is farther off is a fault of the product or of its model.
constexpr double largest_miss = 10;            // m on the ground
constexpr double largest_range_miss = 10;      // m of slant range
constexpr double largest_time_miss_us = 1500;  // about 10 m along the track

double microseconds(double seconds) {
  return 1e6 * seconds;
}

// For a column of so many decimals: what rounds to 0 is shown without a sign.
double unsigned_zero(double value, double half_of_the_last) {
  return std::abs(value) < half_of_the_last ? 0.0 : value;
}

// printf with the result as a text, of less than 200 bytes.
template <class... Values>
std::string formatted(const char* form, Values... values) {
  char text[200];
  std::snprintf(text, sizeof text, form, values...);
  return text;
}

}  // namespace

std::vector<CheckedPoint> check_scene_points(const std::string& annotation,
                                             const rmdllib::Placement& placement) {
  const std::string schema = check_annotation(annotation).schema;
  std::vector<CheckedPoint> points;
  for (const ScenePoint& stated : read_scene_points(annotation, schema)) {
    if (!stated.pixel) continue;
    const rmdllib::Pixel pixel = {stated.pixel->line, stated.pixel->sample};
    points.push_back({stated, placement.radar() != nullptr
                                  ? check_point(*placement.radar(), pixel, stated)
                                  : check_point(placement, pixel, stated)});
  }
  if (!points.empty()) return points;
  throw gridkit::Error("its centre and corner coordinates name no row and column to check");
}

json table_as_json(const std::vector<CheckedPoint>& points, const rmdllib::Placement& placement) {
  const auto of_radar = [&](double value) {
    return placement.radar() != nullptr ? json(value) : json(nullptr);
  };
  json list = json::array();
  for (const auto& [stated, result] : points) {
    list.push_back({{"point", stated.name},
                    {"line", stated.pixel->line},
                    {"sample", stated.pixel->sample},
                    {"latitude", stated.latitude},
                    {"longitude", stated.longitude},
                    {"height", of_radar(result.height)},
                    {"along", result.along},
                    {"across", result.across},
                    {"atAverageHeight", result.at_average_height},
                    {"azimuthTime", of_radar(result.azimuth_time)},
                    {"slantRange", of_radar(result.slant_range)}});
  }
  return list;
}

void print_table(const std::vector<CheckedPoint>& points, const rmdllib::Placement& placement) {
  const auto* radar = placement.radar();
  const bool is_map = radar == nullptr;
  if (!is_map) std::printf("scene's average height %.1f m\n", radar->average_height());
  std::printf("%-10s %9s %9s %13s %14s", "point", "line", "sample", "latitude, deg",
              "longitude, deg");
  if (is_map) {
    std::printf(" %9s %9s\n", "north, m", "east, m");
  } else {
    std::printf(" %9s %9s %9s %20s %8s %8s\n", "height, m", "along, m", "across, m",
                "at average height, m", "time, us", "range, m");
  }
  for (const auto& [stated, result] : points) {
    std::printf("%-10s %9.1f %9.1f %13.6f %14.6f", stated.name.c_str(), stated.pixel->line,
                stated.pixel->sample, stated.latitude, stated.longitude);
    if (!is_map) std::printf(" %9.1f", result.height);
    std::printf(" %9.3f %9.3f", unsigned_zero(result.along, 0.0005),
                unsigned_zero(result.across, 0.0005));
    if (!is_map) {
      std::printf(" %20.1f %8.0f %8.3f", result.at_average_height,
                  unsigned_zero(microseconds(result.azimuth_time), 0.5),
                  unsigned_zero(result.slant_range, 0.0005));
    }
    std::printf("\n");
  }
}

std::vector<std::string> faults_of(const CheckedPoint& point) {
  const auto& [stated, result] = point;
  std::vector<std::string> faults;
  if (result.miss() > largest_miss) {
    faults.push_back(stated.name +
                     formatted(" lies %.1f m from its pixel at any terrain height", result.miss()));
  }
  if (std::abs(result.slant_range) > largest_range_miss) {
    faults.push_back(stated.name +
                     formatted(": its pixel's slant range is %+.1f m off the annotated rangeTime",
                               result.slant_range));
  }
  if (std::abs(microseconds(result.azimuth_time)) > largest_time_miss_us) {
    faults.push_back(stated.name +
                     formatted(": its pixel's time is %+.0f us off the annotated azimuthTimeUTC",
                               microseconds(result.azimuth_time)));
  }
  return faults;
}
