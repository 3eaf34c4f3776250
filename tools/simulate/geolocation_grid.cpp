#include "tools/simulate/geolocation_grid.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <stdexcept>
#include <string_view>
#include <vector>

#include "tools/simulate/annotation_common.h"

namespace simulate {

namespace {

constexpr std::int32_t most_lines = 270;
constexpr std::int32_t most_samples = 232;
constexpr std::int32_t fewest_pixels = 32;

std::string exact(double value) {
  std::array<char, 40> text{};
  std::snprintf(text.data(), text.size(), "%.17E", value);
  return text.data();
}

// Pixels from one point to the next: an eighth of the image, within bounds.
std::int32_t step_of(std::int32_t pixels, std::int32_t most) {
  return std::clamp(pixels / 8, fewest_pixels, most);
}

// Points of one axis: the raster's first time, the time from one to the next, and how many cover
// the image.
struct Axis {
  double first = 0;
  double step = 0;
  std::size_t count = 0;

  double at(std::size_t point) const { return step * static_cast<double>(point); }
};

Axis axis_of(double first, double last, std::int32_t pixels, std::int32_t most) {
  const double spacing = (last - first) / (pixels - 1);
  const std::int32_t step = step_of(pixels, most);
  return {first, spacing * step, static_cast<std::size_t>((pixels - 2) / step) + 2};
}

Axis azimuth_of(const Scene& scene) {
  return axis_of(scene.start, scene.stop, scene.options.lines, most_lines);
}

Axis range_of_times(const Scene& scene) {
  return axis_of(scene.near_time, scene.far_time, scene.options.samples, most_samples);
}

// Indented elements.
class Xml {
 public:
  explicit Xml(const std::string& path) : path_(path), out_(path, std::ios::binary) {}

  void open(const std::string& tag) {
    indent();
    out_ << '<' << tag << ">\n";
    open_.push_back(tag.substr(0, tag.find(' ')));
  }
  void close() {
    const std::string name = open_.back();
    open_.pop_back();
    indent();
    out_ << "</" << name << ">\n";
  }
  void element(const std::string& tag, std::string_view text) {
    indent();
    out_ << '<' << tag << '>' << text << "</" << tag.substr(0, tag.find(' ')) << ">\n";
  }
  void element(const std::string& tag, double value) {
    element(tag, std::string_view(exact(value)));
  }
  void element(const std::string& tag, std::size_t count) {
    element(tag, std::string_view(std::to_string(count)));
  }
  void pair(const std::string& tag, const auto& azimuth, const auto& range) {
    open(tag);
    element("azimuth", azimuth);
    element("range", range);
    close();
  }
  void finish() {
    out_.close();
    if (!out_) throw std::runtime_error(path_ + ": cannot be written");
  }

 private:
  void indent() { out_ << std::string(2 * open_.size(), ' '); }

  std::string path_;
  std::ofstream out_;
  std::vector<std::string> open_;
};

void write_setup(Xml& xml, const Scene& scene) {
  xml.open("gridSetup");
  xml.element("gridGenerator", std::string_view("tsx-simulate"));
  xml.element("geolocationDEMID", std::string_view(scene.terrain ? "simulated" : "average_height"));
  xml.close();
  xml.open("platformParameterProcessing");
  xml.element("orbitAccuracy", std::string_view("SCIE"));
  xml.element("orbitProcessingTechnique", std::string_view("simulated"));
  xml.element("orbitPolDegree", std::size_t{7});
  xml.element("orbitDataQualityIndicator", 1.0);
  xml.element("attitudeAccuracy", std::string_view("STD"));
  xml.element("attitudeProcessingTechnique", std::string_view("LINEAR"));
  xml.element("attitudePolDegree", std::size_t{1});
  xml.element("attitudeDataQualityIndicator", 1.0);
  xml.close();
}

void write_frames(Xml& xml, const Scene& scene) {
  xml.open("referenceFrames");
  xml.open("sphere");
  xml.element("ellipsoidID", std::string_view("WGS84"));
  xml.element("semiMajorAxis", wgs84::semimajor);
  xml.element("semiMinorAxis", wgs84::semiminor);
  xml.open("datumShift");
  for (const char* axis : {"x", "y", "z"}) xml.element(axis, 0.0);
  xml.close();
  xml.element("constGM", wgs84::gravity);
  xml.element("omega", wgs84::rotation);
  xml.close();
  xml.open("time");
  xml.element("refTimeFrame", std::string_view("UTC"));
  const Utc start = scene.utc(scene.start);
  xml.element("diffUTC_GPS", static_cast<double>(start.gps_minus_utc()));
  xml.element("leapSecondFlag", std::size_t{0});
  xml.element("lastLeapSecondUTC", std::string_view(start.last_leap_second().text()));
  xml.element("approxDiffUT1_UTC", 0.0);
  xml.close();
  xml.close();
}

// A constant over the image's range times.
void write_constant(Xml& xml, const Scene& scene, const std::string& name, const char* model,
                    const char* source, double seconds) {
  const Validity validity = over_range(scene);
  xml.open(name + " modelName=\"" + model + "\" modelVersion=\"1.0\" source=\"" + source + '"');
  xml.element("validityRangeMin", validity.from);
  xml.element("validityRangeMax", validity.to);
  xml.element("referencePoint", validity.reference);
  xml.element("polynomialDegree", std::size_t{0});
  xml.element("coefficient exponent=\"0\"", seconds);
  xml.close();
}

void write_delays(Xml& xml, const Scene& scene) {
  const SignalDelays& delays = scene.options.delays;
  xml.open("signalPropagationEffects");
  write_constant(xml, scene, "rangeDelay", "simulated", "IONO", delays.ionosphere);
  write_constant(xml, scene, "rangeDelay", "simulated", "ATMOS", delays.troposphere);
  write_constant(xml, scene, "azimuthShift", "simulated", "TIMING", delays.azimuth_shift);
  xml.close();
}

void write_point(Xml& xml, const Scene& scene, RasterTimes since_reference) {
  const RasterTimes times{scene.start + since_reference.azimuth,
                          scene.near_time + since_reference.range};
  const Geodetic place = scene.ground_at(times);
  const Pixel pixel = scene.pixel_at(times);
  xml.element("t", since_reference.azimuth);
  xml.element("tau", since_reference.range);
  xml.element("lat", place.latitude_radians / degree);
  xml.element("lon", place.longitude_radians / degree);
  xml.element("row", std::string_view(std::to_string(std::lround(pixel.line) + 1)));
  xml.element("col", std::string_view(std::to_string(std::lround(pixel.sample) + 1)));
  xml.element("inc", scene.incidence_at(place) / degree);
  xml.element("elev", (look_angle(scene, place) - mechanical_boresight) / degree);
  xml.element("height", place.height);
}

void write_points(Xml& xml, const Scene& scene) {
  const Axis azimuth = azimuth_of(scene);
  const Axis range = range_of_times(scene);
  xml.open("geolocationGrid");
  xml.open("numberOfGridPoints");
  xml.element("total", azimuth.count * range.count);
  xml.element("azimuth", azimuth.count);
  xml.element("range", range.count);
  xml.close();
  xml.pair("spacingOfGridPoints", azimuth.step, range.step);
  xml.pair("recInterpolTechnique", std::string_view("LINEAR"), std::string_view("LINEAR"));
  xml.pair("recInterpolPolDegree", std::size_t{1}, std::size_t{1});
  const Pixel first = scene.pixel_at({azimuth.first, range.first});
  xml.open("gridReferenceTime");
  xml.element("tReferenceTimeUTC", std::string_view(scene.utc(azimuth.first).text()));
  xml.element("tauReferenceTime", range.first);
  xml.element("refRow", std::string_view(std::to_string(std::lround(first.line) + 1)));
  xml.element("refCol", std::string_view(std::to_string(std::lround(first.sample) + 1)));
  xml.close();
  for (std::size_t a = 0; a < azimuth.count; ++a) {
    for (std::size_t r = 0; r < range.count; ++r) {
      xml.open("gridPoint iaz=\"" + std::to_string(a + 1) + "\" irg=\"" + std::to_string(r + 1) +
               '"');
      write_point(xml, scene, {azimuth.at(a), range.at(r)});
      xml.close();
    }
  }
  xml.close();
}

}  // namespace

GridSize grid_size_of(const Scene& scene) {
  return {azimuth_of(scene).count, range_of_times(scene).count};
}

void write_geolocation_grid(const std::string& path, const Scene& scene,
                            const std::string& product) {
  Xml xml(path);
  xml.open("geoReference mainAnnotationFileName=\"../" + product +
           ".xml\" xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" "
           "xsi:noNamespaceSchemaLocation=\"../SUPPORT/geoReference.xsd\"");
  write_setup(xml, scene);
  write_frames(xml, scene);
  write_delays(xml, scene);
  write_points(xml, scene);
  xml.close();
  xml.finish();
}

}  // namespace simulate
