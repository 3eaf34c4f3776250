#include <bit>
#include <cstdint>
#include <cstdio>
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
    case SampleType::u16:
      return 12;
  }
  return 0;
}

std::string number(double value) {
  char text[32];
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
  const gdal_messages messages;
  char* text = nullptr;
  const char* const form[] = {"FORMAT=WKT1_ESRI", nullptr};
  const bool told = system.exportToWkt(&text, form) == OGRERR_NONE;
  const std::string wkt = told && text != nullptr ? text : "";
  CPLFree(text);
  return "map info = {" + map + "}\ncoordinate system string = {" + wkt + "}\n";
}

class EnviWriter final : public RasterWriter {
 public:
  EnviWriter(const std::string& path, std::int32_t width, std::int32_t height,
             RasterOptions options)
      : lines_(path, width, height, sample_size(options.type)),
        options_(std::move(options)),
        file_(path, options_.existing),
        header_(path + ".hdr", options_.existing),
        target_(path) {}

  void write_lines(std::span<const std::byte> samples, std::int32_t lines) override {
    lines_.add(lines, samples.size());
    file_.write(samples);
  }

  void add_metadata(const std::string& key, const std::string& value) override {
    metadata_.emplace_back(key, value);
  }

  void set_no_data(double value) override { options_.no_data = value; }

  void finish() override {
    if (!lines_.is_complete()) throw Error(target_ + ": lines are missing");
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
    text << "ENVI\ndescription = {";
    for (std::size_t i = 0; i < metadata_.size(); ++i) {
      const auto& [key, value] = metadata_[i];
      text << (i == 0 ? "\n  " : ",\n  ") << key << ": " << without_braces(value);
    }
    text << "}\nsamples = " << lines_.width() << "\nlines = " << lines_.height()
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

  LineCount lines_;
  RasterOptions options_;
  PartialStream file_;
  PartialStream header_;
  std::string target_;
  std::vector<std::pair<std::string, std::string>> metadata_;
};

}  // namespace

std::unique_ptr<RasterWriter> create_envi(const std::string& path, std::int32_t width,
                                          std::int32_t height, const RasterOptions& options) {
  return std::make_unique<EnviWriter>(path, width, height, options);
}

}  // namespace gridkit
