#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "gridkit/companion.h"
#include "gridkit/export.h"
#include "gridkit/plugin.h"

// The geolocation grid that comes with a product: where points of its image really are, under which
// angle they were seen, and by how much the raster's times differ from those of the geometry.

namespace gridkit {

// A grid, read and checked by the plug-in's companion. Immutable, so any number of threads may use
// one at once.
class GRIDKIT_API GeolocationGrid {
 public:
  // From points in the order [along][across], at least two each way. Throws Error for others.
  GeolocationGrid(std::size_t along, std::size_t across, std::vector<gkc_GridPoint> points,
                  double range_delay, double azimuth_shift);

  // Points in the direction of azimuth time and of range time, see gkc_GridPoint for units.
  std::size_t along() const { return along_; }
  std::size_t across() const { return across_; }
  std::span<const gkc_GridPoint> points() const { return points_; }  // [along][across]

  // In seconds, see gkc_GeolocationGrid: a place is seen at zero Doppler at the raster's azimuth
  // time less the shift, and at its two-way range time less the delay.
  double range_delay() const { return range_delay_; }
  double azimuth_shift() const { return azimuth_shift_; }

  // Whether the points stand in lines and columns of the image, so that it can be asked by line and
  // sample. An image on a map has no such points.
  bool has_image_axes() const { return !lines_.empty(); }

  // The line of each point along and the sample of each across, rising or falling; empty without
  // image axes.
  std::span<const double> line_axis() const { return lines_; }
  std::span<const double> sample_axis() const { return samples_; }

  // Incidence angle in degrees, and the terrain's height in metres above the ellipsoid, at a place
  // of the image, whole numbers being centres of pixels: bilinear between the four points around
  // it. Beyond the outermost points the outermost cell runs on for at most its own length, from
  // where the value stays. Not a number without image axes.
  double incidence_at(double line, double sample) const;
  double height_at(double line, double sample) const;

  // The incidence of angles.size() samples of a line, from `first_sample` on and `sample_step`
  // apart: the same as incidence_at, a few operations a sample.
  void incidence_of_line(double line, double first_sample, double sample_step,
                         std::span<double> angles) const;

 private:
  // A place between a point of an axis and the next: their shares are 1 - fraction and fraction.
  struct Between {
    std::size_t point;
    double fraction;
  };
  static Between find(const std::vector<double>& axis, double at);
  double at(double gkc_GridPoint::*number, double line, double sample) const;

  std::size_t along_;
  std::size_t across_;
  std::vector<gkc_GridPoint> points_;
  double range_delay_;
  double azimuth_shift_;
  std::vector<double> lines_;
  std::vector<double> samples_;
};

// A product's grid, null where it has none, or where `warning` tells in one sentence why that it
// has was not taken. It is never a reason to refuse the product.
struct FoundGrid {
  std::shared_ptr<const GeolocationGrid> grid;
  std::string warning;
};

// The grid of the product at that path, through the plug-in's companion; its image files need not
// be there. Nothing is found where the plug-in has no companion or an older one. Any thread may
// ask.
GRIDKIT_API FoundGrid find_geolocation_grid(const Plugin& plugin, const std::string& path);

}  // namespace gridkit
