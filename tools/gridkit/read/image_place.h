#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "gridkit/image_reader.h"
#include "gridkit/raster_writer.h"

// Where a window of a layer lies on Earth, in the form that image files take: a georeference for an
// image on a map, else a grid of ground control points and rational polynomials from the published
// sensor model.
struct ImagePlace {
  std::optional<gridkit::Georeference> georeference;
  std::vector<gridkit::ControlPoint> control_points;
  std::vector<std::pair<std::string, std::string>> rational_model;  // as RasterOptions has it
  // What files with control points and polynomials tell of them: keys and values.
  std::vector<std::pair<std::string, std::string>> metadata;
  std::string not_known;         // why there is none of these, empty where there is
  std::string grid_warning;      // why the geolocation grid was not taken, empty where it was
  std::string rational_warning;  // what is to be told of the polynomials, or why there are none
};

// Control points stand on the outer corners and edges of the window and evenly between, so many a
// side, at the terrain's height where the product's geolocation grid tells it, else at the scene's
// average height.
inline constexpr int control_points_a_side = 15;

// With `delays` those of the signal are applied where the product's geolocation grid tells them.
ImagePlace place_of(const gridkit::Product& product, const gridkit::Layer& layer,
                    const gridkit::Window& window, bool delays);

// Tells on standard error what is to be told of the place of an output.
void warn_about_place(const ImagePlace& place, const std::string& output);
