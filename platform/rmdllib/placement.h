#pragma once

#include <variant>

#include "gridkit/export.h"
#include "gridkit/geolocation_grid.h"
#include "gridkit/map_point.h"
#include "gridkit/product.h"
#include "rmdllib/radar_geometry.h"

namespace rmdllib {

// The corrections that a geolocation grid tells of its product's raster.
GRIDKIT_API SignalCorrections corrections_of(const gridkit::GeolocationGrid& grid);

// Where the pixels of a product lie on Earth, from what its format publishes alone: the generic
// sensor model where it offers one, else the map data of its first layer.
class GRIDKIT_API Placement {
 public:
  // Throws gridkit::Error for a product that has neither.
  explicit Placement(const gridkit::Product& product);

  // From a sensor model by itself. Throws gridkit::Error for one that gives no geometry.
  explicit Placement(const gridkit::NonStandardData& model);

  // Corrects the times of a sensor model's raster by so much instead of what they were corrected by
  // before; a map stays as it is. Throws gridkit::Error for numbers that are not finite.
  void apply(const SignalCorrections& corrections);

  // The sensor model's geometry, null for an image on a map.
  const RadarGeometry* radar() const { return std::get_if<RadarGeometry>(&place_); }

  // The image's size.
  double lines() const;
  double samples() const;

  // Whether a place lies on the image: up to half a pixel beyond the centres of its outermost
  // pixels.
  bool contains(Pixel pixel) const;

  // The place at a pixel, at a height in metres above the ellipsoid, which a map takes no notice
  // of. Throws gridkit::Error where there is none.
  Geodetic ground_of(Pixel pixel, double height) const;

  // Where a place is seen, also outside the image. Throws gridkit::Error where it is not.
  Pixel pixel_of(const Geodetic& place) const;

 private:
  struct Map {
    gridkit::MapTransform transform;
    double lines;
    double samples;
  };
  using Place = std::variant<RadarGeometry, Map>;

  static Place place_of(const gridkit::Product& product);

  Place place_;
};

}  // namespace rmdllib
