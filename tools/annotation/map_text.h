#pragma once

#include <optional>
#include <string>

#include "gridkit/map_data.h"
#include "tools/annotation/annotated_images.h"

// Map systems in words that compare equal when they mean the same: "UTM zone 32 N, WGS84",
// "UPS N, WGS84". Blanks and case do not tell datums apart.

// Of a projection in its MIF form. One that is neither UTM nor UPS, with their own constants, is
// told as what it is, such as "Polar Stereographic, WGS84".
std::string map_text(const gridkit::MapProjection& projection);

// Of the annotation; nothing where its system is not known.
std::optional<std::string> map_text(const AnnotatedMap& map);

// UTM or UPS on a datum.
struct MapSystem {
  int zone = 0;  // 1 to 60, 0 for UPS
  bool south = false;
  std::string datum;  // in capitals, without blanks
};

// Of the annotation; nothing where its projection is neither, or its zone none from 1 to 60. The
// hemisphere of a UTM zone follows from the scene's centre: southern zones count northings from ten
// million metres.
std::optional<MapSystem> map_system(const AnnotatedMap& map);
