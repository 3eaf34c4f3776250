#include "companion/grid_points.h"

#include <array>
#include <cmath>
#include <cstddef>
#include <utility>

#include "companion/failure.h"
#include "companion/utc_seconds.h"

namespace companion {

namespace {

constexpr std::size_t most_points = 1'000'000;
// An element of a point with its eight numbers takes more.
constexpr std::size_t fewest_bytes_a_point = 100;
constexpr std::size_t most_effects = 16;
constexpr std::size_t most_coefficients = 16;

enum PointField : std::size_t { t, tau, lat, lon, row, col, inc, height, point_fields };
constexpr std::array<NumberField, point_fields> fields_of_a_point = {{{"t", -1e5, 1e5},
                                                                      {"tau", -1, 1},
                                                                      {"lat", -90, 90},
                                                                      {"lon", -360, 360},
                                                                      {"row", -1e9, 1e9},
                                                                      {"col", -1e9, 1e9},
                                                                      {"inc", 0, 90},
                                                                      {"height", -2000, 10000}}};

// What the points' times count from.
struct Reference {
  double azimuth_time = 0;
  double range_time = 0;
};

Reference read_reference(XmlWalk& walk, const std::string& element,
                         const lmx::c_datetime& scene_start) {
  constexpr std::array<NumberField, 1> fields = {{{"tauReferenceTime", 0, 1}}};
  std::string begin;
  const auto [range_time] = numbers_of(walk, element, fields, [&](const std::string& child) {
    if (child != "tReferenceTimeUTC") return walk.skip(child);
    if (!begin.empty()) walk.fail(lmx::error_too_many_occurrences, child);
    begin = walk.text(child);
    if (!lmx::c_datetime::is_valid(begin)) {
      walk.fail(lmx::error_invalid_value, child, "a date and time");
    }
  });
  if (begin.empty()) {
    walk.fail(lmx::error_required_element_missing, element, "tReferenceTimeUTC");
  }
  lmx::c_datetime time;
  time = begin;
  return {seconds_since_midnight(time, scene_start), range_time};
}

struct Counts {
  std::size_t along = 0;
  std::size_t across = 0;
};

Counts read_counts(XmlWalk& walk, const std::string& element, std::int64_t file_bytes) {
  constexpr double most = most_points;
  constexpr std::array<NumberField, 3> fields = {
      {{"total", 4, most}, {"azimuth", 2, most}, {"range", 2, most}}};
  const auto [total, azimuth, range] =
      numbers_of(walk, element, fields, [&](const std::string& child) { walk.skip(child); });
  const Counts counts = {static_cast<std::size_t>(azimuth), static_cast<std::size_t>(range)};
  if (std::floor(azimuth) != azimuth || std::floor(range) != range || azimuth * range != total) {
    walk.fail(lmx::error_invalid_value, element, "numbers of points whose product is the total");
  }
  if (counts.along * counts.across > static_cast<std::size_t>(file_bytes) / fewest_bytes_a_point) {
    walk.fail(lmx::error_invalid_value, element,
              "no more points than a file of " + std::to_string(file_bytes) + " bytes holds");
  }
  return counts;
}

gkc_GridPoint read_point(XmlWalk& walk, const std::string& element, const Reference& reference,
                         XmlWalk::Attributes& attributes) {
  const auto n = numbers_of(
      walk, element, fields_of_a_point, [&](const std::string& child) { walk.skip(child); },
      &attributes);
  // Rows and columns count from 1.
  return {reference.azimuth_time + n[t],
          reference.range_time + n[tau],
          n[lat],
          n[lon],
          n[height],
          n[inc],
          n[row] - 1,
          n[col] - 1};
}

RangePolynomial read_polynomial(XmlWalk& walk, const std::string& element) {
  constexpr std::array<NumberField, 1> fields = {{{"referencePoint", 0, 1}}};
  RangePolynomial polynomial;
  std::array<bool, most_coefficients> seen{};
  const auto [reference] = numbers_of(walk, element, fields, [&](const std::string& child) {
    if (child != "coefficient") return walk.skip(child);
    XmlWalk::Attributes attributes;
    const double value = walk.number(child, -1e30, 1e30, &attributes);
    std::size_t exponent = 0;
    for (const auto& attribute : attributes) {
      if (attribute.first == "exponent" && attribute.second != "0") {
        exponent = walk.count_in(attributes, "exponent");
      }
    }
    if (exponent >= most_coefficients || seen[exponent]) {
      walk.fail(lmx::error_too_many_occurrences, child, "each exponent once, from 0 to 15");
    }
    seen[exponent] = true;
    if (exponent >= polynomial.coefficients.size()) polynomial.coefficients.resize(exponent + 1);
    polynomial.coefficients[exponent] = value;
  });
  polynomial.reference = reference;
  if (polynomial.coefficients.empty()) {
    walk.fail(lmx::error_required_element_missing, element, "coefficient");
  }
  return polynomial;
}

}  // namespace

double RangePolynomial::at(double range_time) const {
  double value = 0;
  for (std::size_t i = coefficients.size(); i-- > 0;) {
    value = value * (range_time - reference) + coefficients[i];
  }
  return value;
}

PropagationEffects read_propagation_effects(XmlWalk& walk, const std::string& element) {
  PropagationEffects effects;
  walk.children(element, [&](const std::string& child) {
    auto* list = child == "rangeDelay"     ? &effects.delays
                 : child == "azimuthShift" ? &effects.shifts
                                           : nullptr;
    if (list == nullptr) return walk.skip(child);
    if (list->size() == most_effects) walk.fail(lmx::error_too_many_occurrences, child);
    list->push_back(read_polynomial(walk, child));
  });
  if (effects.delays.empty()) {
    walk.fail(lmx::error_required_element_missing, element, "rangeDelay");
  }
  return effects;
}

GeolocationGrid read_points(XmlWalk& walk, const std::string& element,
                            const lmx::c_datetime& scene_start, std::int64_t file_bytes) {
  GeolocationGrid grid;
  std::optional<Counts> counts;
  std::optional<Reference> reference;
  std::vector<bool> seen;
  std::size_t read = 0;
  walk.children(element, [&](const std::string& child) {
    if (child == "numberOfGridPoints") {
      if (counts) walk.fail(lmx::error_too_many_occurrences, child);
      counts = read_counts(walk, child, file_bytes);
      grid.points.resize(counts->along * counts->across);
      seen.resize(grid.points.size());
      return;
    }
    if (child == "gridReferenceTime") {
      if (reference) walk.fail(lmx::error_too_many_occurrences, child);
      reference = read_reference(walk, child, scene_start);
      return;
    }
    if (child != "gridPoint") return walk.skip(child);
    if (!counts || !reference) {
      walk.fail(lmx::error_required_element_missing, element,
                counts ? "gridReferenceTime ahead of the points"
                       : "numberOfGridPoints ahead of the points");
    }
    XmlWalk::Attributes attributes;
    const gkc_GridPoint point = read_point(walk, child, *reference, attributes);
    const std::size_t along = walk.count_in(attributes, "iaz");
    const std::size_t across = walk.count_in(attributes, "irg");
    const std::size_t place = (along - 1) * counts->across + across - 1;
    if (along > counts->along || across > counts->across || seen[place]) {
      walk.fail(lmx::error_too_many_occurrences, child,
                "each point of the " + std::to_string(counts->along) + " x " +
                    std::to_string(counts->across) + " once");
    }
    seen[place] = true;
    grid.points[place] = point;
    ++read;
  });
  if (!counts || read < grid.points.size()) {
    walk.fail(lmx::error_required_element_missing, element,
              !counts ? std::string("numberOfGridPoints")
                      : std::to_string(grid.points.size()) + " points, of which " +
                            std::to_string(read) + " are there");
  }
  grid.points_along = static_cast<std::int32_t>(counts->along);
  grid.points_across = static_cast<std::int32_t>(counts->across);
  return grid;
}

}  // namespace companion
