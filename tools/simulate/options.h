#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tools/simulate/orbit.h"

namespace simulate {

enum class Variant { ssc, mgd, gec, eec };
enum class Profile { minimal, typical, maximal };
enum class Mode { stripmap, spotlight, scansar };

// What to simulate.
struct Options {
  Variant variant = Variant::ssc;
  std::vector<std::string> polarisations = {"HH"};
  std::string version_text = "4.1";
  std::int32_t lines = 1024;
  std::int32_t samples = 1024;
  std::uint64_t seed = 1;
  double latitude = 48.08;  // scene centre, degrees
  double longitude = 11.28;
  double height = 600;  // m, average height of the scene
  Pass pass = Pass::descending;
  Look look = Look::right;
  double incidence = 35;                             // degrees, at the centre
  std::string start = "2008-03-10T13:32:20.083162";  // scene start, UTC
  Profile profile = Profile::typical;
  Mode mode = Mode::stripmap;
  bool polar_projection = false;             // UPS instead of UTM
  std::string start_with = "EARLYAZNEARRG";  // which corner an MGD raster begins with
  double annotation_megabytes = 0;  // grows repeating records until the annotation is as large
  std::int32_t targets = 9;
};

}  // namespace simulate
