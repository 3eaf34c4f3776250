#include <bit>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <locale>
#include <span>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "gridkit/layers/gdal_support.h"
#include "gridkit/maps/gdal_reference.h"
#include "gridkit/raster_writer.h"
#include "gridkit/services/partial_stream.h"
#include "gridkit/services/plain_locale.h"
#include "gridkit/writers/line_count.h"

namespace gridkit {

namespace {

// The number by which an ENVI header tells the type of samples.
int envi_type(SampleType type) {
  switch (type) {
    case SampleType::u8:
      return 1;
    case SampleType::s16:
      return 2;
    case SampleType::f32:
      return 4;
    case SampleType::cs16:  // stored as floats
    case SampleType::cf32:
      return 6;
    case SampleType::u16:
      return 12;
  }
  return 0;
}

std::string number(double value) {
  char text[32];
  const PlainLocale plain;
  std::snprintf(text, sizeof text, "%.17g", value);
  return text;
}

// Braces end a value of the header; a metadata text that holds one gets brackets instead.
std::string without_braces(std::string text) {
  for (char& c : text) {
    if (c == '{') c = '[';
    if (c == '}') c = ']';
    if (c == '\n' || c == '\r') c = ' ';
  }
  return text;
}

// The two entries that place an image on a map. Pixel 1, 1 is told by its outer corner.
std::string map_entries(const Georeference& georeference) {
  OGRSpatialReference system = reference_of(georeference);
  const auto& t = georeference.transform;
  int north = 0;
  const int zone = system.GetUTMZone(&north);
  const char* const datum = system.GetAttrValue("DATUM");
  // The one datum that headers have a name of their own for; the system's text tells any other.
  const bool is_wgs84 = datum != nullptr && std::string_view(datum) == "WGS_1984";
  std::string map = zone > 0 ? "UTM" : "Arbitrary";
  map +=
      ", 1, 1, " + number(t[0]) + ", " + number(t[3]) + ", " + number(t[1]) + ", " + number(-t[5]);
  if (zone > 0) map += ", " + std::to_string(zone) + (north != 0 ? ", North" : ", South");
  if (zone > 0 && is_wgs84) map += ", WGS-84";
  map += ", units=Meters";
  const GdalMessages messages;
  char* text = nullptr;
  const char* const form[] = {"FORMAT=WKT1_ESRI", nullptr};
  const bool told = system.exportToWkt(&text, form) == OGRERR_NONE;
  const std::string wkt = told && text != nullptr ? text : "";
  CPLFree(text);
  return "map info = {" + map + "}\ncoordinate system string = {" + wkt + "}\n";
}

class EnviSamples final : public RasterWriter {
 public:
  // `name` is how messages call the image.
  EnviSamples(ByteSink sink, std::string name, std::int32_t width, std::int32_t height,
              SampleType type)
      : lines_(name, width, height, sample_size(type)),
        type_(type),
        sink_(std::move(sink)),
        name_(std::move(name)) {}

  void write_lines(std::span<const std::byte> samples, std::int32_t lines) override {
    lines_.add(lines, samples.size());
    if (type_ != SampleType::cs16) return sink_(samples);
    for (; !samples.empty(); samples = samples.subspan(lines_.line_bytes())) {
      write_as_floats(samples.first(lines_.line_bytes()));
    }
  }

  void add_metadata(const std::string&, const std::string&) override {}
  void set_no_data(double) override {}

  void finish() override {
    if (!lines_.is_complete()) throw Error(name_ + ": lines are missing");
  }

 private:
  // Of one line, so that what is held of the widened samples stays small.
  void write_as_floats(std::span<const std::byte> integers) {
    floats_.resize(integers.size() / sizeof(std::int16_t));
    for (std::size_t i = 0; i < floats_.size(); ++i) {
      std::int16_t value = 0;
      std::memcpy(&value, &integers[i * sizeof value], sizeof value);
      floats_[i] = value;
    }
    sink_(std::as_bytes(std::span<const float>(floats_)));
  }

  LineCount lines_;
  SampleType type_;
  ByteSink sink_;
  std::string name_;
  std::vector<float> floats_;  // a line of complex integers, widened
};

class EnviWriter final : public RasterWriter {
 public:
  EnviWriter(const std::string& path, std::int32_t width, std::int32_t height,
             RasterOptions options)
      : width_(width),
        height_(height),
        options_(std::move(options)),
        file_(path, options_.existing),
        header_(path + ".hdr", options_.existing),
        samples_([this](std::span<const std::byte> bytes) { file_.write(bytes); }, path, width,
                 height, options_.type) {}

  void write_lines(std::span<const std::byte> samples, std::int32_t lines) override {
    samples_.write_lines(samples, lines);
  }

  void add_metadata(const std::string& key, const std::string& value) override {
    metadata_.emplace_back(key, value);
  }

  void set_no_data(double value) override { options_.no_data = value; }

  void finish() override {
    samples_.finish();
    file_.close();
    const std::string header = header_text();
    header_.write(std::as_bytes(std::span(header)));
    header_.close();
    // Neither pixels nor a header stand beside what is not theirs.
    if (options_.existing == Existing::replace) header_.remove_target();
    file_.complete();
    try {
      header_.complete();
    } catch (const Error&) {
      file_.remove_target();
      throw;
    }
  }

 private:
  std::string header_text() const {
    std::ostringstream text;
    text.imbue(std::locale::classic());
    text << "ENVI\ndescription = {";
    for (std::size_t i = 0; i < metadata_.size(); ++i) {
      const auto& [key, value] = metadata_[i];
      text << (i == 0 ? "\n  " : ",\n  ") << key << ": " << without_braces(value);
    }
    text << "}\nsamples = " << width_ << "\nlines = " << height_
         << "\nbands = 1\nheader offset = 0\nfile type = ENVI Standard\ndata type = "
         << envi_type(options_.type) << "\ninterleave = bsq\nbyte order = "
         << (std::endian::native == std::endian::little ? 0 : 1) << '\n';
    if (!options_.band_name.empty())
      text << "band names = {" << without_braces(options_.band_name) << "}\n";
    if (!options_.unit.empty()) text << "data units = {" << options_.unit << "}\n";
    if (options_.no_data) text << "data ignore value = " << number(*options_.no_data) << '\n';
    if (options_.georeference) text << map_entries(*options_.georeference);
    return text.str();
  }

  std::int32_t width_;
  std::int32_t height_;
  RasterOptions options_;
  PartialStream file_;
  PartialStream header_;
  EnviSamples samples_;
  std::vector<std::pair<std::string, std::string>> metadata_;
};

}  // namespace

std::unique_ptr<RasterWriter> stream_envi(ByteSink sink, const std::string& name,
                                          std::int32_t width, std::int32_t height,
                                          const RasterOptions& options) {
  return std::make_unique<EnviSamples>(std::move(sink), name, width, height, options.type);
}

std::unique_ptr<RasterWriter> create_envi(const std::string& path, std::int32_t width,
                                          std::int32_t height, const RasterOptions& options) {
  return std::make_unique<EnviWriter>(path, width, height, options);
}

}  // namespace gridkit
