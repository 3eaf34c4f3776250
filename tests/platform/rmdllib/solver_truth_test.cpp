// The solver of places against the table of truths beside this file, which says its own form.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <map>
#include <numbers>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "rmdllib/ellipsoid.h"
#include "rmdllib/orbit_track.h"
#include "rmdllib/range_doppler.h"

namespace {

using rmdllib::Ellipsoid;
using rmdllib::Geodetic;
using rmdllib::LookSide;
using rmdllib::Motion;
using rmdllib::OrbitTrack;
using rmdllib::RadarPoint;
using rmdllib::Vector3;

struct Truth {
  int line = 0;  // of its operation, in the table
  std::string operation;
  std::vector<std::string> given;
  std::vector<double> expected;
  double tolerance_metres = 0;

  double number(std::size_t i) const { return std::stod(given.at(i)); }
  Geodetic place() const { return {number(0), number(1), number(2)}; }
  Vector3 position() const { return {number(0), number(1), number(2)}; }
};

struct Table {
  std::vector<Truth> truths;
  double first_time = 0;
  double interval = 0;
  std::vector<Vector3> positions;
  std::vector<Vector3> velocities;

  OrbitTrack orbit() const { return {first_time, interval, positions, velocities}; }
};

double metres(double value, const std::string& unit) {
  if (unit == "nm") return value * 1e-9;
  if (unit == "um") return value * 1e-6;
  throw std::runtime_error("no unit of a tolerance: " + unit);
}

Vector3 vector(std::istream& words) {
  Vector3 v;
  words >> v.x >> v.y >> v.z;
  return v;
}

Table read_table() {
  std::ifstream file(SOLVER_TRUTH);
  Table table;
  std::string text;
  for (int number = 1; std::getline(file, text); ++number) {
    std::istringstream words(text);
    std::string word;
    if (!(words >> word) || word.starts_with('#')) continue;
    if (word == "operation") {
      table.truths.push_back({});
      table.truths.back().line = number;
      words >> table.truths.back().operation;
    } else if (word == "given") {
      while (words >> word) table.truths.back().given.push_back(word);
    } else if (word == "expect") {
      while (words >> word) table.truths.back().expected.push_back(std::stod(word));
    } else if (word == "within") {
      double value = 0;
      words >> value >> word;
      table.truths.back().tolerance_metres = metres(value, word);
    } else if (word == "vectors") {
      words >> table.first_time >> table.interval;
    } else if (word == "vector") {
      table.positions.push_back(vector(words));
      table.velocities.push_back(vector(words));
    } else {
      throw std::runtime_error("line " + std::to_string(number) + " begins with " + word);
    }
  }
  return table;
}

const Ellipsoid& earth() {
  static const Ellipsoid wgs84 = Ellipsoid::wgs84();
  return wgs84;
}

double largest_difference(const std::vector<double>& found, const std::vector<double>& expected) {
  if (found.size() != expected.size()) return std::numeric_limits<double>::infinity();
  double largest = 0;
  for (std::size_t i = 0; i < found.size(); ++i) {
    largest = std::max(largest, std::abs(found[i] - expected[i]));
  }
  return largest;
}

// By the differences of coordinates, so that a tenth of a nanometre shows: positions far from the
// centre of the Earth would be rounded to a nanometre.
double distance(const Geodetic& found, const std::vector<double>& expected) {
  constexpr double radius = 6.4e6;  // m, no less than that of the Earth
  constexpr double degree = std::numbers::pi / 180;
  const double east = std::remainder(found.longitude_degrees - expected[1], 360) * degree *
                      std::cos(expected[0] * degree);
  const double north = (found.latitude_degrees - expected[0]) * degree;
  const double reach = radius + expected[2];
  return std::hypot(reach * east, reach * north, found.height - expected[2]);
}

double error_of_to_earth_fixed(const Truth& truth, const OrbitTrack&) {
  const Vector3 found = earth().to_earth_fixed(truth.place());
  return largest_difference({found.x, found.y, found.z}, truth.expected);
}

double error_of_to_geodetic(const Truth& truth, const OrbitTrack&) {
  return distance(earth().to_geodetic(truth.position()), truth.expected);
}

double error_of_orbit(const Truth& truth, const OrbitTrack& orbit) {
  const Motion found = orbit.at(truth.number(0));
  const auto& [p, v, a] = found;
  return largest_difference({p.x, p.y, p.z, v.x, v.y, v.z, a.x, a.y, a.z}, truth.expected);
}

double error_of_to_radar(const Truth& truth, const OrbitTrack& orbit) {
  constexpr double speed = 7600;  // m/s
  const double middle = (orbit.first_time() + orbit.last_time()) / 2;
  const RadarPoint found = to_radar(orbit, earth(), truth.place(), middle);
  return std::max(speed * std::abs(found.time - truth.expected.at(0)),
                  std::abs(found.range - truth.expected.at(1)));
}

double error_of_to_ground(const Truth& truth, const OrbitTrack& orbit) {
  const LookSide side = truth.given.at(2) == "left" ? LookSide::left : LookSide::right;
  const RadarPoint point = {truth.number(0), truth.number(1)};
  return distance(to_ground(orbit, earth(), side, point, truth.number(3)), truth.expected);
}

using ErrorOf = double (*)(const Truth&, const OrbitTrack&);

const std::map<std::string, ErrorOf> operations = {
    {"to_earth_fixed", error_of_to_earth_fixed},
    {"to_geodetic", error_of_to_geodetic},
    {"orbit", error_of_orbit},
    {"to_radar", error_of_to_radar},
    {"to_ground", error_of_to_ground},
};

TEST(Solver, GivesWhatTheTableOfTruthsSays) {
  const Table table = read_table();
  const OrbitTrack orbit = table.orbit();
  std::map<std::string, int> counts;
  std::map<std::string, double> worst;
  for (const Truth& truth : table.truths) {
    SCOPED_TRACE(std::string(SOLVER_TRUTH) + ':' + std::to_string(truth.line));
    ASSERT_TRUE(operations.contains(truth.operation)) << truth.operation;
    ASSERT_GT(truth.tolerance_metres, 0);
    const double error = operations.at(truth.operation)(truth, orbit);
    EXPECT_LE(error, truth.tolerance_metres) << truth.operation;
    ++counts[truth.operation];
    worst[truth.operation] = std::max(worst[truth.operation], error);
  }
  for (const auto& [operation, _] : operations) {
    EXPECT_GE(counts[operation], 7) << operation;
    RecordProperty(operation + "_worst_nm", std::to_string(1e9 * worst[operation]));
  }
}

}  // namespace
