#include <cstdint>
#include <limits>

#include <cpl_string.h>
#include <gdal.h>
#include <ogr_srs_api.h>

#include "gridkit/gdal_support.h"
#include "gridkit/partial_file.h"
#include "gridkit/raster_writer.h"

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
  }
  return GDT_Unknown;
}

constexpr std::int32_t lines_in_memory = 64;  // the library would keep a part of all memory

struct closer {
  void operator()(void* dataset) const { GDALClose(dataset); }
};

class GeoTiffWriter final : public RasterWriter {
 public:
  GeoTiffWriter(const std::string& path, std::int32_t width, std::int32_t height,
                const RasterOptions& options)
      : file_(path), target_(path), width_(width), height_(height), type_(gdal_type(options.type)) {
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
    const auto sample = static_cast<std::size_t>(GDALGetDataTypeSizeBytes(type_));
    const auto expected =
        sample * static_cast<std::size_t>(width_) * static_cast<std::size_t>(lines < 0 ? 0 : lines);
    if (lines < 0 || samples.size() != expected || lines > height_ - next_line_) {
      throw Error(target_ + ": the lines do not fit the image");
    }
    if (lines == 0) return;
    const gdal_messages messages;
    auto* data = const_cast<std::byte*>(samples.data());
    if (GDALRasterIO(GDALGetRasterBand(dataset_.get(), 1), GF_Write, 0, next_line_, width_, lines,
                     data, width_, lines, type_, 0, 0) != CE_None) {
      refuse("cannot be written", messages);
    }
    next_line_ += lines;
    if (next_line_ / lines_in_memory != (next_line_ - lines) / lines_in_memory) {
      GDALFlushRasterCache(GDALGetRasterBand(dataset_.get(), 1));
    }
  }

  void add_metadata(const std::string& key, const std::string& value) override {
    const gdal_messages messages;
    GDALSetMetadataItem(dataset_.get(), key.c_str(), value.c_str(), nullptr);
  }

  void finish() override {
    const gdal_messages messages;
    dataset_.reset();
    if (!messages.first_or("").empty()) refuse("cannot be written", messages);
    file_.complete();
  }

 private:
  [[noreturn]] void refuse(const char* what, const gdal_messages& messages) {
    throw Error(target_ + ": " + what + ": " + messages.first_or("unknown reason"));
  }

  void describe(const RasterOptions& options, const gdal_messages& messages) {
    if (options.georeference) set_georeference(*options.georeference, messages);
    if (options.no_data) {
      GDALSetRasterNoDataValue(GDALGetRasterBand(dataset_.get(), 1), *options.no_data);
    }
  }

  void set_georeference(const Georeference& reference, const gdal_messages& messages) {
    OGRSpatialReferenceH system = OSRNewSpatialReference(nullptr);
    const bool known = OSRImportFromEPSG(system, reference.epsg) == OGRERR_NONE &&
                       GDALSetSpatialRef(dataset_.get(), system) == CE_None;
    OSRDestroySpatialReference(system);
    auto transform = reference.transform;
    if (!known || GDALSetGeoTransform(dataset_.get(), transform.data()) != CE_None) {
      refuse("cannot be georeferenced", messages);
    }
  }

  PartialFile file_;
  std::string target_;
  std::int32_t width_;
  std::int32_t height_;
  GDALDataType type_;
  std::int32_t next_line_ = 0;
  std::unique_ptr<void, closer> dataset_;
};

}  // namespace

std::unique_ptr<RasterWriter> create_geotiff(const std::string& path, std::int32_t width,
                                             std::int32_t height, const RasterOptions& options) {
  if (width < 1 || height < 1) throw Error(path + ": an image needs a positive size");
  return std::make_unique<GeoTiffWriter>(path, width, height, options);
}

}  // namespace gridkit
