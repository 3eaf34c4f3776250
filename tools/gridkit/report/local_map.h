#pragma once

#include <array>
#include <optional>
#include <string>
#include <vector>

#include "rmdllib/ellipsoid.h"
#include "tools/gridkit/report/labels.h"
#include "tools/gridkit/report/place.h"

namespace report {

// A map of the surroundings of a place: points of the ellipsoid seen straight from above it, north
// up. Good at the poles and across the date line; distances shrink outwards, by 1 % at 900 km.
class LocalMap {
 public:
  static constexpr double width = 460;  // of the drawing
  static constexpr double height = 380;
  static constexpr double left = 78;  // margins for the labels
  static constexpr double right = 12;
  static constexpr double top = 12;
  static constexpr double bottom = 26;
  static constexpr Box drawing = {0, 0, width, height};
  static constexpr Box frame = {left, top, width - right, height - bottom};  // of the map itself

  // Shows all of the places with some room around them. At least one.
  explicit LocalMap(const std::vector<rmdllib::Geodetic>& places);

  // Nothing for a place beyond the horizon of the map's middle.
  std::optional<Place> place_of(const rmdllib::Geodetic& place) const;

  // Parallels and meridians as SVG, and their labels, which stand outside the frame.
  struct Graticule {
    std::string lines;
    std::vector<Label> labels;
  };
  Graticule graticule() const;

  // A bar of a round length, in the frame's lower left corner, and the label that tells the length.
  struct ScaleBar {
    std::string bar;  // as SVG
    Box room;         // of the bar without its label
    Label label;
  };
  ScaleBar scale_bar() const;

 private:
  struct Line {
    std::string path;
    std::optional<Place> label;
  };

  std::array<double, 2> metres_of(const rmdllib::Geodetic& place) const;
  Line line(double value, bool is_parallel, double from, double to) const;

  rmdllib::Ellipsoid earth_;
  rmdllib::Geodetic middle_;
  double shift_east_ = 0;  // of the frame's middle, metres
  double shift_north_ = 0;
  double metres_per_unit_ = 1;
};

}  // namespace report
