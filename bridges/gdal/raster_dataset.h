#pragma once

#include <cpl_string.h>
#include <gdal_priv.h>
#include <ogr_spatialref.h>

#include <array>
#include <optional>
#include <string>
#include <vector>

#include "bridges/gdal/place.h"
#include "bridges/gdal/raster_source.h"

namespace gridkit_gdal {

// A product, or one raster of it. What takes time is found out when it is asked for: control
// points, rational polynomials and the description. As of every dataset of GDAL's, one thread at a
// time may use it.
class RasterDataset final : public GDALDataset {
 public:
  explicit RasterDataset(Product product) : product_(std::move(product)) {}

  // Gives it its band. False, with a failure reported, where GDAL has no room for it.
  bool take(const RasterSource& source, const PlaceOptions& options);

  // Lists what there is in the product, by the path that it was opened with.
  void list_parts(const std::string& path);

  CPLErr GetGeoTransform(double* transform) override;
  const OGRSpatialReference* GetSpatialRef() const override;
  int GetGCPCount() override;
  const GDAL_GCP* GetGCPs() override;
  const OGRSpatialReference* GetGCPSpatialRef() const override;
  char** GetMetadataDomainList() override;
  char** GetMetadata(const char* domain) override;
  const char* GetMetadataItem(const char* name, const char* domain) override;
  char** GetFileList() override;

 private:
  bool is_in_radar_geometry() const { return source_ && source_->is_placed && !transform_; }
  void find_map();
  void find_control_points();
  void find_metadata(const char* domain);

  Product product_;
  std::optional<RasterSource> source_;
  PlaceOptions options_;
  std::optional<std::array<double, 6>> transform_;
  OGRSpatialReference map_;
  OGRSpatialReference wgs84_;
  std::optional<std::vector<GDAL_GCP>> points_;
  std::vector<std::string> point_names_;
  bool has_description_ = false;
  bool has_rational_model_ = false;
};

}  // namespace gridkit_gdal
