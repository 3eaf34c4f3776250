#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include <cpl_string.h>
#include <gdal.h>

#include "gridkit/layers/gdal_support.h"
#include "gridkit/maps/gdal_reference.h"
#include "gridkit/partial_file.h"
#include "gridkit/raster_writer.h"
#include "gridkit/writers/compression.h"
#include "gridkit/writers/line_count.h"
#include "gridkit/writers/thread_count.h"

namespace gridkit {

namespace {

GDALDataType gdal_type(SampleType type) {
  switch (type) {
    case SampleType::u8:
      return GDT_Byte;
    case SampleType::u16:
      return GDT_UInt16;
    case SampleType::s16:
      return GDT_Int16;
    case SampleType::f32:
      return GDT_Float32;
    case SampleType::cs16:
      return GDT_CInt16;
    case SampleType::cf32:
      return GDT_CFloat32;
  }
  return GDT_Unknown;
}

constexpr std::int32_t lines_in_memory = 64;  // the library would keep a part of all memory
constexpr std::size_t compressed_strip_bytes = 512UL * 1024;  // about so many

// A strip that is compressed is written whole, so that it is compressed once.
std::int32_t lines_a_strip(const LineCount& lines, Compression compression) {
  if (compression == Compression::none) return 1;
  const auto most = std::min(lines_in_memory, lines.height());
  const auto fitting = static_cast<std::int32_t>(
      std::min<std::size_t>(compressed_strip_bytes / lines.line_bytes(), lines_in_memory));
  return std::clamp(fitting, 1, most);
}

// Gives a file up: what goes wrong then concerns nobody.
struct Closer {
  void operator()(void* dataset) const {
    const GdalMessages unheard;
    GDALClose(dataset);
  }
};

class GeoTiffWriter final : public RasterWriter {
 public:
  GeoTiffWriter(const std::string& path, std::int32_t width, std::int32_t height,
                const RasterOptions& options)
      : lines_(path, width, height, sample_size(options.type)),
        file_(path, options.existing),
        target_(options.shown_path.empty() ? path : options.shown_path),
        type_(gdal_type(options.type)) {
    const Compression compression = options.compression.value_or(Compression::none);
    strip_lines_ = lines_a_strip(lines_, compression);
    register_geotiff();
    const GdalMessages messages;
    CPLStringList settings;
    settings.SetNameValue("BLOCKYSIZE", std::to_string(strip_lines_).c_str());
    settings.SetNameValue("BIGTIFF", compression == Compression::none ? "IF_NEEDED" : "IF_SAFER");
    if (compression != Compression::none) {
      settings.SetNameValue("COMPRESS", gdal_name(compression));
      if (has_predictor(options.type)) {
        settings.SetNameValue("PREDICTOR", options.type == SampleType::f32 ? "3" : "2");
      }
      settings.SetNameValue("NUM_THREADS", std::to_string(thread_count(options.threads)).c_str());
    }
    settings.SetNameValue("SPARSE_OK", options.sparse ? "YES" : "NO");
    dataset_.reset(GDALCreate(GDALGetDriverByName("GTiff"), file_.path().c_str(), width, height, 1,
                              type_, settings.List()));
    if (dataset_ == nullptr) refuse("cannot be created", messages);
    describe(options, messages);
  }

  void write_lines(std::span<const std::byte> samples, std::int32_t lines) override {
    lines_.add(lines, samples.size());
    if (strip_lines_ == 1) return write_on(samples);
    collected_.insert(collected_.end(), samples.begin(), samples.end());
    const std::size_t strip_bytes = static_cast<std::size_t>(strip_lines_) * lines_.line_bytes();
    const std::size_t whole = collected_.size() / strip_bytes * strip_bytes;
    write_collected(lines_.is_complete() ? collected_.size() : whole);
  }

  void add_metadata(const std::string& key, const std::string& value) override {
    const GdalMessages messages;
    GDALSetMetadataItem(dataset_.get(), key.c_str(), value.c_str(), nullptr);
  }

  void set_no_data(double value) override { GDALSetRasterNoDataValue(band(), value); }

  void finish() override {
    write_collected(collected_.size());
    const GdalMessages messages;
    GDALClose(dataset_.release());
    if (messages.any()) refuse("cannot be written", messages);
    file_.complete();
  }

 private:
  // Lines that follow those written before.
  void write_on(std::span<const std::byte> samples) {
    const auto lines = static_cast<std::int32_t>(samples.size() / lines_.line_bytes());
    if (lines == 0) return;
    const GdalMessages messages;
    const std::int32_t first = written_lines_;
    written_lines_ += lines;
    auto* data = const_cast<std::byte*>(samples.data());
    bool written = GDALRasterIO(band(), GF_Write, 0, first, lines_.width(), lines, data,
                                lines_.width(), lines, type_, 0, 0) == CE_None;
    if (written_lines_ / lines_in_memory != first / lines_in_memory) {
      written = GDALFlushRasterCache(band()) == CE_None && written;
    }
    // A line that was put off earlier may be what fails now.
    if (!written || messages.any()) refuse("cannot be written", messages);
  }

  void write_collected(std::size_t bytes) {
    write_on(std::span(collected_).first(bytes));
    collected_.erase(collected_.begin(), collected_.begin() + static_cast<std::ptrdiff_t>(bytes));
  }

  GDALRasterBandH band() const { return GDALGetRasterBand(dataset_.get(), 1); }

  [[noreturn]] void refuse(const char* what, const GdalMessages& messages) {
    throw Error(target_ + ": " + what + ": " + messages.reason());
  }

  void describe(const RasterOptions& options, const GdalMessages& messages) {
    if (options.georeference) set_georeference(*options.georeference, messages);
    if (!options.control_points.empty()) set_control_points(options.control_points, messages);
    if (!options.rational_model.empty()) set_rational_model(options.rational_model, messages);
    if (options.no_data) set_no_data(*options.no_data);
    if (!options.band_name.empty()) GDALSetDescription(band(), options.band_name.c_str());
    if (!options.unit.empty()) GDALSetRasterUnitType(band(), options.unit.c_str());
  }

  void set_georeference(const Georeference& georeference, const GdalMessages& messages) {
    OGRSpatialReference system = reference_of(georeference);
    auto transform = georeference.transform;
    if (GDALSetSpatialRef(dataset_.get(), OGRSpatialReference::ToHandle(&system)) != CE_None ||
        GDALSetGeoTransform(dataset_.get(), transform.data()) != CE_None) {
      refuse("cannot be georeferenced", messages);
    }
  }

  void set_rational_model(const std::vector<std::pair<std::string, std::string>>& model,
                          const GdalMessages& messages) {
    CPLStringList items;
    for (const auto& [name, value] : model) items.SetNameValue(name.c_str(), value.c_str());
    if (GDALSetMetadata(dataset_.get(), items.List(), "RPC") != CE_None) {
      refuse("cannot take its rational model", messages);
    }
  }

  void set_control_points(const std::vector<ControlPoint>& points, const GdalMessages& messages) {
    std::vector<std::string> names;
    names.reserve(points.size());
    std::vector<GDAL_GCP> entries;
    char none[] = "";
    for (const ControlPoint& point : points) {
      names.push_back(std::to_string(names.size() + 1));
      entries.push_back({names.back().data(), none, point.column, point.line, point.longitude,
                         point.latitude, point.height});
    }
    OGRSpatialReference system = reference_of(Georeference{.epsg = 4326});
    system.SetAxisMappingStrategy(OAMS_TRADITIONAL_GIS_ORDER);
    if (GDALSetGCPs2(dataset_.get(), static_cast<int>(entries.size()), entries.data(),
                     OGRSpatialReference::ToHandle(&system)) != CE_None) {
      refuse("cannot take its control points", messages);
    }
  }

  LineCount lines_;
  PartialFile file_;
  std::string target_;
  GDALDataType type_;
  std::int32_t strip_lines_ = 1;
  std::int32_t written_lines_ = 0;
  std::vector<std::byte> collected_;  // lines that do not fill a strip yet
  std::unique_ptr<void, Closer> dataset_;
};

}  // namespace

std::unique_ptr<RasterWriter> create_geotiff(const std::string& path, std::int32_t width,
                                             std::int32_t height, const RasterOptions& options) {
  return std::make_unique<GeoTiffWriter>(path, width, height, options);
}

}  // namespace gridkit
