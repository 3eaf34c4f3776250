#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "rmdllib/placement.h"
#include "tools/gridkit/place/point_check.h"
#include "tools/gridkit/place/scene_points.h"

// A place that the annotation states, with its pixel, and what the check found.
struct CheckedPoint {
  ScenePoint stated;
  PointCheck result;
};

// Checks every place whose pixel the annotation names, of a valid annotation. Throws gridkit::Error
// where it names none.
std::vector<CheckedPoint> check_scene_points(const std::string& annotation,
                                             const rmdllib::Placement& placement);

// The results as `gridkit locate --check` shows them.
nlohmann::ordered_json table_as_json(const std::vector<CheckedPoint>& points,
                                     const rmdllib::Placement& placement);
void print_table(const std::vector<CheckedPoint>& points, const rmdllib::Placement& placement);

// What is wrong about a point, one sentence each; none where model and annotation agree.
std::vector<std::string> faults_of(const CheckedPoint& point);
