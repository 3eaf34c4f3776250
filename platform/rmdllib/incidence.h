#pragma once

#include <memory>
#include <string>

#include "gridkit/export.h"
#include "gridkit/radiometry.h"
#include "rmdllib/radar_geometry.h"

namespace rmdllib {

// The angle at which a place is seen: between the direction to the satellite, abeam of which it
// lies, and the ellipsoid's outward normal. Radians.
GRIDKIT_API double incidence_angle(const RadarGeometry& geometry, Pixel pixel, double height);

// Angles over an image on the ellipsoid, at the scene's average height.
class GRIDKIT_API EllipsoidIncidence final : public gridkit::Incidence {
 public:
  explicit EllipsoidIncidence(std::shared_ptr<const RadarGeometry> geometry);
  ~EllipsoidIncidence() override;

  double at(double line, double sample) const override;
  std::string source() const override;

 private:
  std::shared_ptr<const RadarGeometry> geometry_;
};

}  // namespace rmdllib
