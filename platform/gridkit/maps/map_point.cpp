#include "gridkit/map_point.h"

#include <cmath>
#include <string>

#include <ogr_spatialref.h>

#include "gridkit/error.h"
#include "gridkit/layers/gdal_support.h"
#include "gridkit/maps/projection_form.h"
#include "gridkit/maps/projection_mif.h"

namespace gridkit {

namespace {

using Transformation = std::unique_ptr<OGRCoordinateTransformation>;

Transformation transformation_between(const OGRSpatialReference& from,
                                      const OGRSpatialReference& to, const std::string& datum) {
  const GdalMessages messages;
  OGRCoordinateTransformationOptions options;
  // Better no answer than one that leaves a shift of datum out.
  options.SetBallparkAllowed(false);
  Transformation made(OGRCreateCoordinateTransformation(&from, &to, options));
  if (made == nullptr) {
    throw Error("no transformation between the datum \"" + datum +
                "\" and WGS 84: " + messages.first_or("none is known"));
  }
  return made;
}

struct Xy {
  double x;
  double y;
};

Xy transform(OGRCoordinateTransformation& path, Xy point, const char* what) {
  const GdalMessages messages;
  int reached = 0;
  const bool finite = std::isfinite(point.x) && std::isfinite(point.y);
  const bool done =
      finite && path.Transform(1, &point.x, &point.y, nullptr, &reached) != 0 && reached != 0;
  if (!done || !std::isfinite(point.x) || !std::isfinite(point.y)) {
    throw Error(std::string(what) + " lies outside the map projection's reach");
  }
  return point;
}

}  // namespace

struct MapTransform::Path {
  MapInfo grid;
  Transformation to_ground;
  Transformation to_map;
};

MapTransform::MapTransform(const MapInfo& info, const MapProjection& projection)
    : path_(std::make_unique<Path>()) {
  for (int axis = 0; axis < 2; ++axis) {
    if (!std::isfinite(info.upper_left[axis]) || !std::isnormal(info.pixel_size[axis])) {
      throw Error("the map information tells no grid of pixels");
    }
  }
  const ProjectionForm form = form_of(projection);
  const OGRSpatialReference map = reference_of(form);
  OGRSpatialReference ground = datum_of("WGS 84");
  ground.SetAxisMappingStrategy(OAMS_TRADITIONAL_GIS_ORDER);
  path_->grid = info;
  path_->to_ground = transformation_between(map, ground, form.datum);
  path_->to_map = transformation_between(ground, map, form.datum);
}

MapTransform::MapTransform(MapTransform&&) noexcept = default;
MapTransform& MapTransform::operator=(MapTransform&&) noexcept = default;
MapTransform::~MapTransform() = default;

GeographicPoint MapTransform::to_ground(const ImagePoint& point) const {
  const MapInfo& grid = path_->grid;
  const Xy map{grid.upper_left[0] + (point.sample + 0.5) * grid.pixel_size[0],
               grid.upper_left[1] + (point.line + 0.5) * grid.pixel_size[1]};
  const Xy ground = transform(*path_->to_ground, map, "the image point");
  return {ground.y, ground.x};
}

ImagePoint MapTransform::to_image(const GeographicPoint& point) const {
  if (!(std::abs(point.latitude_degrees) <= 90)) {
    throw Error("the ground point's latitude is not in -90 to 90 degrees");
  }
  const MapInfo& grid = path_->grid;
  const Xy map = transform(*path_->to_map, {point.longitude_degrees, point.latitude_degrees},
                           "the ground point");
  return {(map.x - grid.upper_left[0]) / grid.pixel_size[0] - 0.5,
          (map.y - grid.upper_left[1]) / grid.pixel_size[1] - 0.5};
}

}  // namespace gridkit
