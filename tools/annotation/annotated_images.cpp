#include "tools/annotation/annotated_images.h"

#include <utility>

#include "tools/annotation/annotation_file.h"

namespace {

// The parameters bind as an empty element too; without a projection they say nothing.
template <class Product>
std::optional<AnnotatedMap> map_of(const Product& product) {
  const auto& specific = product.get_productSpecific();
  if (!specific.isset_geocodedImageInfo()) return std::nullopt;
  const auto& projection = specific.get_geocodedImageInfo().get_mapProjection();
  if (projection.get_projectionID().empty()) return std::nullopt;
  const auto& place = specific.get_geocodedImageInfo().get_geoParameter();
  const auto& frame = place.get_frameCoordsCartographic();
  AnnotatedMap map;
  map.datum = projection.get_geodeticDatumID();
  map.projection = projection.get_projectionID();
  map.zone = projection.get_zoneID();
  map.centre_latitude = place.get_sceneCenterCoordsGeographic().get_centerCoordLatitude();
  map.centre_northing = place.get_sceneCenterCoordsCartographic().get_centerCoordNorthing();
  map.spacing = {place.get_pixelSpacing().get_easting(), place.get_pixelSpacing().get_northing()};
  map.upper_left = {frame.get_upperLeftEasting(), frame.get_upperLeftNorthing()};
  map.lower_right = {frame.get_lowerRightEasting(), frame.get_lowerRightNorthing()};
  return map;
}

template <class Product>
AnnotatedImages images_of(const Product& product, const std::filesystem::path& folder) {
  const auto& info = product.get_productInfo().get_imageDataInfo();
  const auto& raster = info.get_imageRaster(0);
  const auto& components = product.get_productComponents();
  AnnotatedImages images;
  images.format = info.get_imageDataFormat();
  images.layers = info.get_numberOfLayers();
  images.lines = raster.get_numberOfRows();
  images.samples = raster.get_numberOfColumns();
  images.bits = info.get_imageDataDepth();
  for (std::size_t i = 0; i < components.size_imageData(); ++i) {
    const auto& file = components.get_imageData(i).get_file();
    const auto& location = file.get_location();
    images.files.push_back(
        {folder / location.get_path() / location.get_filename(), file.get_size()});
  }
  images.map = map_of(product);
  return images;
}

}  // namespace

std::optional<AnnotatedImages> read_annotated_images(const std::string& path,
                                                     const std::string& schema) {
  return with_root(schema, [&](auto& root) -> std::optional<AnnotatedImages> {
    if (bind_leniently(root, path) != 0) return std::nullopt;
    return images_of(std::as_const(root.get_level1Product()),
                     std::filesystem::path(path).parent_path());
  });
}
