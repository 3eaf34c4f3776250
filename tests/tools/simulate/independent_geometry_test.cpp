// The point targets of simulated products, found again from the annotation's text alone: with a
// reader, an ellipsoid, an interpolation of the state vectors and a zero-Doppler solver of this
// file's own.

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <numbers>
#include <string>
#include <vector>

#include "tests/support/scene_sites.h"
#include "tests/support/scratch_folder.h"
#include "tools/simulate/product.h"

namespace {

namespace fs = std::filesystem;

using Vector = std::array<double, 3>;

double product(const Vector& a, const Vector& b) {
  return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}
Vector difference(const Vector& a, const Vector& b) {
  return {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
}
double norm(const Vector& a) {
  return std::sqrt(product(a, a));
}

constexpr double light = 299792458.0;

std::string content_of(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

// The texts of all elements of a name below the first element of another, in document order.
std::vector<std::string> texts(const std::string& xml, const std::string& within,
                               const std::string& name) {
  std::vector<std::string> found;
  const std::size_t from = xml.find("<" + within + ">");
  const std::size_t to = xml.find("</" + within + ">", from);
  for (std::size_t at = xml.find("<" + name, from); at < to; at = xml.find("<" + name, at + 1)) {
    const char behind = xml[at + 1 + name.size()];
    if (behind != '>' && behind != ' ') continue;
    const std::size_t begin = xml.find('>', at) + 1;
    found.push_back(xml.substr(begin, xml.find('<', begin) - begin));
  }
  return found;
}

std::string text(const std::string& xml, const std::string& within, const std::string& name) {
  const auto all = texts(xml, within, name);
  return all.empty() ? std::string("absent: " + name) : all.front();
}

std::vector<double> numbers(const std::string& xml, const std::string& within,
                            const std::string& name) {
  std::vector<double> values;
  for (const std::string& entry : texts(xml, within, name)) values.push_back(std::stod(entry));
  return values;
}

double number(const std::string& xml, const std::string& within, const std::string& name) {
  return std::stod(text(xml, within, name));
}

// Microseconds since 2000-03-01, by counting days: years from March on, so leap days come last.
std::int64_t instant(const std::string& utc) {
  const auto part = [&](std::size_t at, std::size_t length) {
    return std::stoll(utc.substr(at, length));
  };
  const std::int64_t month = (part(5, 2) + 9) % 12;  // from March
  const std::int64_t year = part(0, 4) - 2000 - (month >= 10 ? 1 : 0);
  const std::int64_t days =
      365 * year + year / 4 - year / 100 + year / 400 + (153 * month + 2) / 5 + part(8, 2) - 1;
  const std::int64_t seconds = ((days * 24 + part(11, 2)) * 60 + part(14, 2)) * 60 + part(17, 2);
  EXPECT_EQ(utc.find('.'), 19U) << utc;
  EXPECT_EQ(utc.substr(20).find_first_not_of("0123456789"), utc.back() == 'Z' ? 6 : utc.npos);
  return seconds * 1000000 + part(20, 6);
}

// What the annotation tells of time, range and orbit. Times in seconds from the scene's start.
struct Annotation {
  explicit Annotation(const std::string& xml)
      : begin(instant(text(xml, "start", "timeUTC"))),
        duration(seconds(text(xml, "stop", "timeUTC"))),
        lines(number(xml, "imageDataInfo", "numberOfRows")),
        samples(number(xml, "imageDataInfo", "numberOfColumns")),
        first_range_time(number(xml, "rangeTime", "firstPixel")),
        last_range_time(number(xml, "rangeTime", "lastPixel")),
        range_spacing(number(xml, "imageDataInfo", "rowSpacing")),
        azimuth_spacing(number(xml, "imageDataInfo", "columnSpacing")),
        prf(number(xml, "complexImageInfo", "commonPRF")),
        rsf(number(xml, "complexImageInfo", "commonRSF")),
        starts_with(text(xml, "productSpecific", "quicklookDataStartWith")),
        to_ground_range(numbers(xml, "slantToGroundRangeProjection", "coefficient")) {
    for (const std::string& utc : texts(xml, "orbit", "timeUTC")) times.push_back(seconds(utc));
    const std::array<std::vector<double>, 6> columns = {
        numbers(xml, "orbit", "posX"), numbers(xml, "orbit", "posY"),
        numbers(xml, "orbit", "posZ"), numbers(xml, "orbit", "velX"),
        numbers(xml, "orbit", "velY"), numbers(xml, "orbit", "velZ")};
    for (std::size_t i = 0; i < times.size(); ++i) {
      positions.push_back({columns[0].at(i), columns[1].at(i), columns[2].at(i)});
      velocities.push_back({columns[3].at(i), columns[4].at(i), columns[5].at(i)});
    }
    if (!to_ground_range.empty()) {
      reference = number(xml, "slantToGroundRangeProjection", "referencePoint");
    }
  }

  double seconds(const std::string& utc) const {
    return static_cast<double>(instant(utc) - begin) * 1e-6;
  }

  // Line and sample, from 0, of a zero-Doppler time and a two-way range time.
  double line(double time) const {
    const double acquired = time / duration * (lines - 1);
    return starts_with.starts_with("LATEAZ") ? lines - 1 - acquired : acquired;
  }
  double sample(double range_time) const {
    double acquired = (range_time - first_range_time) * rsf;
    if (!to_ground_range.empty()) {
      double ground = 0;
      for (std::size_t k = to_ground_range.size(); k-- > 0;) {
        ground = ground * (range_time - reference) + to_ground_range[k];
      }
      acquired = ground / range_spacing;
    }
    return starts_with.ends_with("FARRG") ? samples - 1 - acquired : acquired;
  }

  std::int64_t begin;
  double duration;
  double lines;
  double samples;
  double first_range_time;
  double last_range_time;
  double range_spacing;
  double azimuth_spacing;
  double prf;
  double rsf;
  std::string starts_with;
  std::vector<double> to_ground_range;
  double reference = 0;
  std::vector<double> times;
  std::vector<Vector> positions;
  std::vector<Vector> velocities;
};

// The polynomial through all values, by Neville's scheme. Through 12 states 10 s apart it misses an
// orbit by (110 s x 1.1e-3 rad/s)^12 / 12! of its radius at most, far below rounding.
Vector interpolate(const std::vector<double>& times, std::vector<Vector> values, double time) {
  for (std::size_t width = 1; width < values.size(); ++width) {
    for (std::size_t i = 0; i + width < values.size(); ++i) {
      const double span = times[i + width] - times[i];
      for (std::size_t c = 0; c < 3; ++c) {
        values[i][c] =
            ((time - times[i]) * values[i + 1][c] + (times[i + width] - time) * values[i][c]) /
            span;
      }
    }
  }
  return values[0];
}

Vector earth_fixed(double latitude, double longitude, double height) {
  constexpr double a = 6378137;
  constexpr double f = 1 / 298.257223563;
  constexpr double b = a * (1 - f);
  const double phi = latitude * std::numbers::pi / 180;
  const double lambda = longitude * std::numbers::pi / 180;
  const double w = std::hypot(a * std::cos(phi), b * std::sin(phi));
  const double across = (a * a / w + height) * std::cos(phi);
  return {across * std::cos(lambda), across * std::sin(lambda),
          (b * b / w + height) * std::sin(phi)};
}

struct Seen {
  double time;        // s
  double range_time;  // s, two-way
};

// Zero Doppler by bisection: the sight's part along the flight falls as the satellite passes.
Seen look_at(const Annotation& annotation, const Vector& target) {
  const auto ahead = [&](double time) {
    const Vector sight =
        difference(target, interpolate(annotation.times, annotation.positions, time));
    return product(sight, interpolate(annotation.times, annotation.velocities, time));
  };
  double before = annotation.times.front();
  double after = annotation.times.back();
  for (int i = 0; i < 60; ++i) {
    const double middle = (before + after) / 2;
    (ahead(middle) > 0 ? before : after) = middle;
  }
  const Vector sight =
      difference(target, interpolate(annotation.times, annotation.positions, before));
  return {before, 2 * norm(sight) / light};
}

class FoundAgain : public testing::TestWithParam<SceneSite> {
 protected:
  // A stripmap scene of about that many metres both ways, with images that hold nothing.
  simulate::Options options(simulate::Variant variant, double extent) const {
    simulate::Options o;
    const bool is_complex = variant == simulate::Variant::ssc;
    o.variant = variant;
    o.latitude = GetParam().latitude;
    o.longitude = GetParam().longitude;
    o.pass = GetParam().pass;
    o.look = GetParam().look;
    o.start = GetParam().start;
    o.lines = static_cast<std::int32_t>(extent / (is_complex ? 1.9 : 2.75)) + 1;
    o.samples = static_cast<std::int32_t>(extent / (is_complex ? 2.38 : 2.75)) + 1;
    o.targets = 25;
    o.empty_images = true;
    return o;
  }

  void make(const simulate::Options& o) {
    const fs::path path = simulate::write_product_folder(o, scratch.path());
    xml = content_of(path);
    truth = nlohmann::json::parse(content_of(path.parent_path() / "truth.json"));
  }

  void expect_targets_where_stated() {
    const Annotation annotation(xml);
    ASSERT_EQ(truth["targets"].size(), 25U);
    for (const auto& target : truth["targets"]) {
      const Seen seen = look_at(
          annotation, earth_fixed(target["latitude"], target["longitude"], target["height"]));
      // A thousandth of a millimetre: a line or sample is 1 to 3 m.
      EXPECT_NEAR(annotation.line(seen.time), target["line"], 1e-6) << target["name"];
      EXPECT_NEAR(annotation.sample(seen.range_time), target["sample"], 1e-6) << target["name"];
    }
  }

  const ScratchFolder scratch;
  std::string xml;
  nlohmann::json truth;
};

TEST_P(FoundAgain, TargetsOfComplexScenesLieWhereStated) {
  for (const double extent : {5e3, 50e3}) {
    SCOPED_TRACE(extent);
    make(options(simulate::Variant::ssc, extent));
    expect_targets_where_stated();
  }
}

TEST_P(FoundAgain, TargetsOfDetectedScenesLieWhereStated) {
  for (const double extent : {5e3, 50e3}) {
    SCOPED_TRACE(extent);
    make(options(simulate::Variant::mgd, extent));
    expect_targets_where_stated();
  }
}

TEST_P(FoundAgain, TargetsOfTurnedRastersLieWhereStated) {
  for (const char* corner : {"EARLYAZFARRG", "LATEAZNEARRG", "LATEAZFARRG"}) {
    SCOPED_TRACE(corner);
    simulate::Options o = options(simulate::Variant::mgd, 20e3);
    o.start_with = corner;
    make(o);
    expect_targets_where_stated();
  }
}

TEST_P(FoundAgain, StateVectorsAreOfOneOrbit) {
  make(options(simulate::Variant::ssc, 50e3));
  const Annotation annotation(xml);
  ASSERT_EQ(annotation.times.size(), 12U);
  EXPECT_EQ(annotation.times.size(), number(xml, "orbitHeader", "numStateVectors"));
  EXPECT_NEAR(annotation.times.front(), -50.5, 0.5);
  EXPECT_GT(annotation.times.back(), annotation.duration + 40);
  for (std::size_t i = 1; i < annotation.times.size(); ++i) {
    EXPECT_DOUBLE_EQ(annotation.times[i] - annotation.times[i - 1], 10);
  }
  // Central differences of the positions' polynomial give the velocities: with a step of 0.01 s
  // they err by 1e-4 / 6 of the third derivative (0.01 m/s3) and by rounding, 1e-8 m over 0.02 s.
  for (const double time : {0.0, annotation.duration / 2, annotation.duration}) {
    const Vector velocity = interpolate(annotation.times, annotation.velocities, time);
    const Vector later = interpolate(annotation.times, annotation.positions, time + 0.01);
    const Vector sooner = interpolate(annotation.times, annotation.positions, time - 0.01);
    for (std::size_t c = 0; c < 3; ++c) {
      EXPECT_NEAR((later[c] - sooner[c]) / 0.02, velocity[c], 2e-6);
    }
  }
}

TEST_P(FoundAgain, SpacingsAgreeWithTimesAndRates) {
  make(options(simulate::Variant::ssc, 50e3));
  const Annotation slant(xml);
  constexpr double single = 1.2e-7;  // relative, of spacings told in single precision
  EXPECT_NEAR(slant.duration, (slant.lines - 1) / slant.prf, 1e-12) << "six decimals tell it all";
  EXPECT_NEAR(slant.azimuth_spacing * slant.prf, 1, single);
  EXPECT_NEAR(slant.range_spacing * slant.rsf, 1, single);
  EXPECT_NEAR((slant.last_range_time - slant.first_range_time) * slant.rsf, slant.samples - 1,
              1e-6);
  const double velocity = number(xml, "zeroDopplerVelocity", "velocity");
  EXPECT_NEAR(number(xml, "complexImageInfo", "projectedSpacingAzimuth") * slant.prf / velocity, 1,
              single);
  make(options(simulate::Variant::mgd, 50e3));
  const Annotation ground(xml);
  EXPECT_EQ(ground.reference, ground.first_range_time);
  EXPECT_EQ(ground.to_ground_range.size(), 6U);
  EXPECT_NEAR(ground.sample(ground.first_range_time), 0, 1e-9);
  EXPECT_NEAR(ground.sample(ground.last_range_time), ground.samples - 1, 1e-6);
  // The scene's half is rounded to a microsecond, in which the ground point moves 7 mm.
  EXPECT_NEAR(velocity * ground.duration, (ground.lines - 1) * ground.azimuth_spacing, 0.015);
}

// Latitude and longitude are told in single precision: up to half of 2^-16 degrees beyond 128, 0.85
// m on the equator.
TEST_P(FoundAgain, CornersAndCentreAreSeenAtTheAverageHeight) {
  for (const simulate::Variant variant : {simulate::Variant::ssc, simulate::Variant::mgd}) {
    make(options(variant, 50e3));
    const Annotation annotation(xml);
    const double height = number(xml, "sceneInfo", "sceneAverageHeight");
    const auto latitudes = numbers(xml, "sceneInfo", "lat");
    const auto longitudes = numbers(xml, "sceneInfo", "lon");
    const auto rows = numbers(xml, "sceneInfo", "refRow");
    const auto columns = numbers(xml, "sceneInfo", "refColumn");
    const auto times = texts(xml, "sceneInfo", "azimuthTimeUTC");
    const auto range_times = texts(xml, "sceneInfo", "rangeTime");
    ASSERT_EQ(latitudes.size(), 5U);
    ASSERT_EQ(range_times.size(), 6U) << "the scene's own, which holds others, comes first";
    for (std::size_t i = 0; i < 5; ++i) {
      const Seen seen = look_at(annotation, earth_fixed(latitudes[i], longitudes[i], height));
      const double range_time = std::stod(range_times[i + 1]);
      const double along = (seen.time - annotation.seconds(times[i])) * 7100;
      const double across = (seen.range_time - range_time) * light / 2;
      EXPECT_LT(std::hypot(along, across), 1.1) << i;
      EXPECT_NEAR(annotation.line(annotation.seconds(times[i])), rows[i] - 1, 2e-3);
      EXPECT_NEAR(annotation.sample(range_time), columns[i] - 1, 1e-6);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Sites, FoundAgain, testing::ValuesIn(scene_sites),
                         [](const auto& site) { return site.param.what; });

}  // namespace
