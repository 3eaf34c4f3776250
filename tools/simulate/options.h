#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tools/simulate/orbit.h"

namespace simulate {

enum class Variant { ssc, mgd, gec, eec };
// Which optional members an annotation has: none, those of usual products, all. The usual one also
// looks like the ground segment's, with uneven lines; the others are as the classes write them.
enum class Profile { minimal, typical, maximal };
enum class Mode { stripmap, spotlight, scansar };

enum class SampleType { int16, half };

// What COSAR files may be like.
struct CosarOptions {
  SampleType sample_type = SampleType::int16;
  std::int32_t bursts = 1;
  std::int32_t record_padding = 0;  // samples by which records are wider than a line takes
  std::int32_t edge_taper = 0;      // samples by which the valid area leans

  friend bool operator==(const CosarOptions&, const CosarOptions&) = default;
};

// By how much a raster's times differ from those of the geometry, which the geolocation grid tells.
struct SignalDelays {
  double troposphere = 0;    // s, of the two-way range time
  double ionosphere = 0;     // s
  double azimuth_shift = 0;  // s; negative where the raster's time is the earlier one

  double range() const { return troposphere + ionosphere; }
};

// What to simulate.
struct Options {
  Variant variant = Variant::ssc;
  std::vector<std::string> polarisations = {"HH"};
  std::string version_text = "4.1";
  std::string satellite = "TSX-1";  // or one of its sisters, TDX-1 and PAZ-1
  std::int32_t lines = 1024;
  std::int32_t samples = 1024;
  std::uint64_t seed = 1;
  double latitude = 48.08;  // scene centre, degrees
  double longitude = 11.28;
  double height = 600;  // m, average height of the scene
  Pass pass = Pass::descending;
  Look look = Look::right;
  double incidence = 35;                             // degrees, at the centre
  std::string start = "2008-03-12T05:17:46.250000";  // scene start, UTC
  Profile profile = Profile::typical;
  Mode mode = Mode::stripmap;
  bool polar_projection = false;             // UPS instead of UTM
  std::string start_with = "EARLYAZNEARRG";  // which corner an MGD raster begins with
  double annotation_megabytes = 0;  // grows repeating records until the annotation is as large
  std::int32_t targets = 9;
  CosarOptions cosar;  // SSC
  SignalDelays delays;
  std::string terrain_file;   // GeoTIFF of heights above the ellipsoid; empty: none
  double relief = 0;          // m, of a synthetic terrain; 0: none
  bool overwrite = true;      // whether files of a product that is there already give way
  bool empty_images = false;  // image files of the right size and layout, but without samples
};

}  // namespace simulate
