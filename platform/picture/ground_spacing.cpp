#include "picture/ground_spacing.h"

#include <algorithm>
#include <cmath>

#include "rmdllib/placement.h"

namespace {

using rmdllib::Ellipsoid;
using rmdllib::Pixel;

}  // namespace

GroundSpacing ground_spacing(const gridkit::Product& product, PictureSize image) {
  const rmdllib::Placement placement(product);
  const auto* radar = placement.radar();
  const Ellipsoid earth = radar != nullptr ? radar->earth() : Ellipsoid::wgs84();
  const double height = radar != nullptr ? radar->average_height() : 0;
  const auto distance = [&](Pixel a, Pixel b) {
    return length(earth.to_earth_fixed(placement.ground_of(b, height)) -
                  earth.to_earth_fixed(placement.ground_of(a, height)));
  };
  const Pixel middle = {image.height / 2.0, image.width / 2.0};
  const double across = std::max(1.0, image.width / 4.0);
  const double along = std::max(1.0, image.height / 4.0);
  const GroundSpacing spacing = {
      distance({middle.line, middle.sample - across}, {middle.line, middle.sample + across}) /
          (2 * across),
      distance({middle.line - along, middle.sample}, {middle.line + along, middle.sample}) /
          (2 * along)};
  if (!(std::isnormal(spacing.sample) && std::isnormal(spacing.line))) {
    throw gridkit::Error(product.path() + ": its pixels have no size on the ground");
  }
  return spacing;
}
