#pragma once

#include <memory>

#include "gridkit/export.h"
#include "gridkit/map_data.h"

namespace gridkit {

// A place on the ground: geodetic, WGS 84.
struct GeographicPoint {
  double latitude_degrees = 0;
  double longitude_degrees = 0;  // -180 to 180, east positive
};

// A place in an image. Pixel centres lie at whole numbers: sample 0 of line 0 is the centre of the
// first pixel, half a pixel inside the upper left corner.
struct ImagePoint {
  double sample = 0;
  double line = 0;
};

// The way from the pixels of a map-projected image to the ground and back. Points may lie outside
// the image. Heights have no say: a map's coordinates are those of the ellipsoid's normal. A datum
// other than WGS 84 is transformed as PROJ knows best with the grids that are installed, never
// without a shift for lack of one. Not for use from several threads at once.
class GRIDKIT_API MapTransform {
 public:
  // Throws Error for a grid without size, or a projection that does not convert.
  MapTransform(const MapInfo& info, const MapProjection& projection);
  MapTransform(MapTransform&&) noexcept;
  MapTransform& operator=(MapTransform&&) noexcept;
  ~MapTransform();

  // Both throw Error for a point that is not finite or that the projection does not reach, and
  // to_image for a latitude beyond the poles.
  GeographicPoint to_ground(const ImagePoint& point) const;
  ImagePoint to_image(const GeographicPoint& point) const;

 private:
  struct Path;
  std::unique_ptr<Path> path_;
};

}  // namespace gridkit
