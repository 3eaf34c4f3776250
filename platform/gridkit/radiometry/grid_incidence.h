#pragma once

#include <memory>
#include <string>
#include <vector>

#include "gridkit/geolocation_grid.h"
#include "gridkit/radiometry.h"

namespace gridkit {

// Angles of a geolocation grid, bilinear in line and sample between its points.
class GridIncidence final : public Incidence {
 public:
  // Of a grid with image axes.
  explicit GridIncidence(std::shared_ptr<const GeolocationGrid> grid);

  double at(double line, double sample) const override;
  std::vector<double> line_knots() const override;
  std::vector<double> sample_knots() const override;
  std::string source() const override;

 private:
  std::shared_ptr<const GeolocationGrid> grid_;
};

}  // namespace gridkit
