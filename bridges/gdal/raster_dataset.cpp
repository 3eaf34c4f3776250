#include "bridges/gdal/raster_dataset.h"

#include <algorithm>
#include <limits>
#include <memory>

#include "bridges/gdal/product_metadata.h"
#include "bridges/gdal/raster_band.h"

namespace gridkit_gdal {

namespace {

constexpr std::array<Quantity, 7> quantities = {
    Quantity::samples, Quantity::amplitude, Quantity::phase, Quantity::intensity,
    Quantity::beta0,   Quantity::sigma0,    Quantity::gamma0};

std::string size_of(const RasterSource& source) {
  return std::to_string(source.lines) + "x" + std::to_string(source.samples);
}

bool is_domain(const char* domain, const char* name) {
  return EQUAL(domain == nullptr ? "" : domain, name);
}

}  // namespace

bool RasterDataset::take(const RasterSource& source, const PlaceOptions& options) {
  constexpr int64_t most = std::numeric_limits<int>::max();
  if (source.lines < 1 || source.samples < 1 || source.lines > most || source.samples > most) {
    CPLError(CE_Failure, CPLE_NotSupported, "%s: an image of %s pixels is none that GDAL can have",
             source.name.c_str(), size_of(source).c_str());
    return false;
  }
  source_ = source;
  options_ = options;
  nRasterXSize = static_cast<int>(source.samples);
  nRasterYSize = static_cast<int>(source.lines);
  find_map();
  // Noise that was subtracted leaves less than 0 where nothing was measured.
  const bool has_no_data = transform_ && source.subtract_noise != gridkit_Yes;
  SetBand(1, new RasterBand(this, source, has_no_data));
  return true;
}

void RasterDataset::list_parts(const std::string& path) {
  CPLStringList parts;
  const auto add = [&](const RasterSource& source, const std::string& what) {
    const std::string key = "SUBDATASET_" + std::to_string(parts.size() / 2 + 1);
    const std::string name = name_of({path, source.name, source.quantity});
    parts.AddNameValue((key + "_NAME").c_str(), name.c_str());
    const std::string text =
        "[" + size_of(source) + "] " + what + " (" + GDALGetDataTypeName(source.type) + ")";
    parts.AddNameValue((key + "_DESC").c_str(), text.c_str());
  };
  for (const RasterSource& image : images_of(product_)) {
    for (const Quantity quantity : quantities) {
      const auto source = made_of(image, quantity);
      HostError unheard;
      if (!source || !is_given(*source, unheard)) continue;
      const std::string word(word_of(quantity));
      add(*source, image.name + (word.empty() ? "" : " " + word));
    }
  }
  for (const RasterSource& layer : layers_of(product_)) add(layer, "layer " + layer.name);
  GDALDataset::SetMetadata(parts.List(), "SUBDATASETS");
}

void RasterDataset::find_map() {
  if (!source_->is_placed) return;
  gridkit_map map = sized<gridkit_map>();
  char* text = nullptr;
  HostError error;
  if (gridkit_get_map(product_.get(), &map, &text, error.out()) != gridkit_Done) return;
  const HostText wkt(text);
  map_.SetAxisMappingStrategy(OAMS_TRADITIONAL_GIS_ORDER);
  if (map_.importFromWkt(wkt.get()) != OGRERR_NONE) return;
  transform_ = {map.upper_left_x, map.pixel_width, 0, map.upper_left_y, 0, map.pixel_height};
}

CPLErr RasterDataset::GetGeoTransform(double* transform) {
  if (!transform_) return GDALDataset::GetGeoTransform(transform);
  std::copy(transform_->begin(), transform_->end(), transform);
  return CE_None;
}

const OGRSpatialReference* RasterDataset::GetSpatialRef() const {
  return transform_ ? &map_ : nullptr;
}

void RasterDataset::find_control_points() {
  if (points_) return;
  points_.emplace();
  if (!is_in_radar_geometry()) return;
  const auto found = control_points_of(*source_, options_);
  point_names_.reserve(found.size());  // GDAL's points hold addresses of their names
  static char no_text[] = "";
  for (const ControlPoint& point : found) {
    point_names_.push_back(std::to_string(point_names_.size() + 1));
    points_->push_back({point_names_.back().data(), no_text, point.column, point.line,
                        point.longitude, point.latitude, point.height});
  }
  wgs84_.SetAxisMappingStrategy(OAMS_TRADITIONAL_GIS_ORDER);
  wgs84_.importFromEPSG(4326);
}

int RasterDataset::GetGCPCount() {
  find_control_points();
  return static_cast<int>(points_->size());
}

const GDAL_GCP* RasterDataset::GetGCPs() {
  find_control_points();
  return points_->empty() ? nullptr : points_->data();
}

const OGRSpatialReference* RasterDataset::GetGCPSpatialRef() const {
  const_cast<RasterDataset*>(this)->find_control_points();
  return points_->empty() ? nullptr : &wgs84_;
}

char** RasterDataset::GetMetadataDomainList() {
  char** const known = GDALDataset::GetMetadataDomainList();
  if (!is_in_radar_geometry()) return BuildMetadataDomainList(known, TRUE, "", nullptr);
  return BuildMetadataDomainList(known, TRUE, "", "RPC", nullptr);
}

// The first question for a domain fills it.
void RasterDataset::find_metadata(const char* domain) {
  if (is_domain(domain, "RPC") && is_in_radar_geometry() && !has_rational_model_) {
    has_rational_model_ = true;
    for (const auto& [name, value] : rational_model_of(*source_, options_)) {
      GDALDataset::SetMetadataItem(name.c_str(), value.c_str(), "RPC");
    }
  }
  if (!is_domain(domain, "") || has_description_) return;
  has_description_ = true;
  auto items = metadata_of(product_);
  if (source_) {
    for (auto& item : metadata_of(*source_)) items.push_back(std::move(item));
  }
  for (const auto& [name, value] : items) {
    GDALDataset::SetMetadataItem(name.c_str(), value.c_str());
  }
}

char** RasterDataset::GetMetadata(const char* domain) {
  find_metadata(domain);
  return GDALDataset::GetMetadata(domain);
}

const char* RasterDataset::GetMetadataItem(const char* name, const char* domain) {
  find_metadata(domain);
  return GDALDataset::GetMetadataItem(name, domain);
}

char** RasterDataset::GetFileList() {
  char** paths = nullptr;
  std::size_t count = 0;
  HostError error;
  if (gridkit_files(product_.get(), &paths, &count, error.out()) != gridkit_Done) {
    error.report();
    return nullptr;
  }
  const std::unique_ptr<char*, HostFree> held(paths);
  CPLStringList files;
  for (std::size_t i = 0; i < count; ++i) files.AddString(paths[i]);
  return files.StealList();
}

}  // namespace gridkit_gdal
