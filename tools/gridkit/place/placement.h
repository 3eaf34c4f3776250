#pragma once

#include <variant>

#include "gridkit/map_point.h"
#include "gridkit/product.h"
#include "rmdllib/radar_geometry.h"

// Where the pixels of a product lie on Earth, from what its format publishes alone: the generic
// sensor model where it offers one, else the map data of its first layer.
class Placement {
 public:
  // Throws gridkit::Error for a product that has neither.
  explicit Placement(const gridkit::Product& product);

  // The sensor model's geometry, null for an image on a map.
  const rmdllib::RadarGeometry* radar() const {
    return std::get_if<rmdllib::RadarGeometry>(&place_);
  }

  // The place at a pixel, at a height in metres above the ellipsoid, which a map takes no notice
  // of. Throws gridkit::Error where there is none.
  rmdllib::Geodetic ground_of(rmdllib::Pixel pixel, double height) const;

  // Where a place is seen, also outside the image. Throws gridkit::Error where it is not.
  rmdllib::Pixel pixel_of(const rmdllib::Geodetic& place) const;

 private:
  std::variant<rmdllib::RadarGeometry, gridkit::MapTransform> place_;
};
