#pragma once

#include <optional>
#include <string>
#include <vector>

#include "gridkit/image_reader.h"
#include "gridkit/raster_writer.h"

// Where a window of a layer lies on Earth, in the form that image files take: a georeference for an
// image on a map, else a grid of ground control points from the published sensor model.
struct ImagePlace {
  std::optional<gridkit::Georeference> georeference;
  std::vector<gridkit::ControlPoint> control_points;
  double height = 0;      // of the control points, metres above the ellipsoid
  std::string not_known;  // why there is neither, empty where there is
};

// Control points stand on the outer corners and edges of the window and evenly between, so many a
// side, at the scene's average height.
inline constexpr int control_points_a_side = 15;

ImagePlace place_of(const gridkit::Product& product, const gridkit::Layer& layer,
                    const gridkit::Window& window);
