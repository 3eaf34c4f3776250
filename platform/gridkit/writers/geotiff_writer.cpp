#include <cstdint>
#include <string>
#include <vector>

#include <cpl_string.h>
#include <gdal.h>

#include "gridkit/layers/gdal_support.h"
#include "gridkit/maps/gdal_reference.h"
#include "gridkit/partial_file.h"
#include "gridkit/raster_writer.h"
#include "gridkit/writers/line_count.h"

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
  }
  return GDT_Unknown;
}

constexpr std::int32_t lines_in_memory = 64;  // the library would keep a part of all memory

// Gives a file up: what goes wrong then concerns nobody.
struct closer {
  void operator()(void* dataset) const {
    const gdal_messages unheard;
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
    register_geotiff();
    const gdal_messages messages;
    CPLStringList settings;
    settings.SetNameValue("BLOCKYSIZE", "1");
    settings.SetNameValue("BIGTIFF", "IF_NEEDED");
    settings.SetNameValue("SPARSE_OK", options.sparse ? "YES" : "NO");
    dataset_.reset(GDALCreate(GDALGetDriverByName("GTiff"), file_.path().c_str(), width, height, 1,
                              type_, settings.List()));
    if (dataset_ == nullptr) refuse("cannot be created", messages);
    describe(options, messages);
  }

  void write_lines(std::span<const std::byte> samples, std::int32_t lines) override {
    const std::int32_t first = lines_.next_line();
    lines_.add(lines, samples.size());
    if (lines == 0) return;
    const gdal_messages messages;
    auto* data = const_cast<std::byte*>(samples.data());
    bool written = GDALRasterIO(band(), GF_Write, 0, first, lines_.width(), lines, data,
                                lines_.width(), lines, type_, 0, 0) == CE_None;
    if (lines_.next_line() / lines_in_memory != first / lines_in_memory) {
      written = GDALFlushRasterCache(band()) == CE_None && written;
    }
    // A line that was put off earlier may be what fails now.
    if (!written || messages.any()) refuse("cannot be written", messages);
  }

  void add_metadata(const std::string& key, const std::string& value) override {
    const gdal_messages messages;
    GDALSetMetadataItem(dataset_.get(), key.c_str(), value.c_str(), nullptr);
  }

  void set_no_data(double value) override { GDALSetRasterNoDataValue(band(), value); }

  void finish() override {
    const gdal_messages messages;
    GDALClose(dataset_.release());
    if (messages.any()) refuse("cannot be written", messages);
    file_.complete();
  }

 private:
  GDALRasterBandH band() const { return GDALGetRasterBand(dataset_.get(), 1); }

  [[noreturn]] void refuse(const char* what, const gdal_messages& messages) {
    throw Error(target_ + ": " + what + ": " + messages.reason());
  }

  void describe(const RasterOptions& options, const gdal_messages& messages) {
    if (options.georeference) set_georeference(*options.georeference, messages);
    if (!options.control_points.empty()) set_control_points(options.control_points, messages);
    if (options.no_data) set_no_data(*options.no_data);
    if (!options.band_name.empty()) GDALSetDescription(band(), options.band_name.c_str());
    if (!options.unit.empty()) GDALSetRasterUnitType(band(), options.unit.c_str());
  }

  void set_georeference(const Georeference& georeference, const gdal_messages& messages) {
    OGRSpatialReference system = reference_of(georeference);
    auto transform = georeference.transform;
    if (GDALSetSpatialRef(dataset_.get(), OGRSpatialReference::ToHandle(&system)) != CE_None ||
        GDALSetGeoTransform(dataset_.get(), transform.data()) != CE_None) {
      refuse("cannot be georeferenced", messages);
    }
  }

  void set_control_points(const std::vector<ControlPoint>& points, const gdal_messages& messages) {
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
  std::unique_ptr<void, closer> dataset_;
};

}  // namespace

std::unique_ptr<RasterWriter> create_geotiff(const std::string& path, std::int32_t width,
                                             std::int32_t height, const RasterOptions& options) {
  return std::make_unique<GeoTiffWriter>(path, width, height, options);
}

}  // namespace gridkit
