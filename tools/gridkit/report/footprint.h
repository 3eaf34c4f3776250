#pragma once

#include <string>
#include <vector>

#include "rmdllib/ellipsoid.h"
#include "tools/gridkit/report/acquisition.h"

namespace report {

// Where an image lies and how it was seen.
struct Footprint {
  // The image's outer corners: first line's first sample, first line's last, last line's last, last
  // line's first.
  std::vector<rmdllib::Geodetic> corners;
  std::vector<rmdllib::Geodetic> stated;  // corners that the annotation states
  std::vector<OrbitState> orbit;
  double duration = 0;  // of the scene, seconds from its start
};

// The scene on a map with north up: graticule, scale, corners, the directions of flight and sight.
// The element <image class="draped"> is laid over the footprint; the page's script gives it its
// picture. Empty for fewer than four corners.
std::string draw_scene_map(const Footprint& footprint);

// The scene beside the satellite's track on the ground, with the line of sight from it. Empty for
// fewer than four corners or two state vectors.
std::string draw_overview(const Footprint& footprint);

}  // namespace report
