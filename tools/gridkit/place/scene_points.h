#pragma once

#include <optional>
#include <string>
#include <vector>

// A place that the annotation itself states: latitude and longitude in degrees, single precision in
// the schema, and when and how far away it is seen.
struct ScenePoint {
  std::string name;  // "centre", "corner 1" to "corner 4"
  double latitude = 0;
  double longitude = 0;
  double azimuth_time = 0;  // seconds of the UTC day, in single precision below the minute
  double slant_range = 0;   // metres, half the way of light in the annotated range time
  struct Reference {
    double line;    // from 0
    double sample;  // from 0
  };
  std::optional<Reference> pixel;  // which the annotation may leave out
};

// The centre and the corners of the scene, of a valid annotation of the schema "3.4", "3.5" or
// "4.0".
std::vector<ScenePoint> read_scene_points(const std::string& path, const std::string& schema);
