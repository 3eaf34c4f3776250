#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "gridkit/export.h"
#include "gridkit/plugin.h"
#include "gridkit/product.h"

namespace gridkit {

// What there is to know of a product at a glance, as the plug-in's companion takes it from the
// product's description: the same facts for people, for programs (gridkit/info_json.h) and for the
// metadata of files. Codes are
// the annotation's own; several of them, as a list may have, stand with ", " between. Places are
// degrees on WGS 84, lengths metres.

// What one image of the product is calibrated with: digital numbers to radar brightness.
struct ImageCalibration {
  std::string polarisation;
  std::vector<double> factors;  // that the annotation states for it, one a beam; each value once
};

struct ProductFacts {
  struct Place {
    double latitude = 0;
    double longitude = 0;
  };

  std::string name;                // of the product: the annotation's name without its ending
  std::string variant;             // "SSC"
  std::string resolution_variant;  // "SE"; empty where the product has none
  std::string type;                // "SSC______SM_S"
  std::string imaging_mode;        // "SM"
  std::string polarisation_mode;   // "SINGLE"
  std::string beam;                // "strip_005"
  std::string look;                // "RIGHT"
  std::vector<std::string> polarisations;

  std::string processing_software;  // that made the product: "TMSP 4.1"

  std::string mission;  // "TSX-1"
  std::int32_t orbit = 0;
  std::int32_t relative_orbit = 0;
  std::int32_t orbit_cycle = 0;
  std::string pass;   // "DESCENDING"
  std::string start;  // of the scene, UTC, as the annotation writes it
  std::string stop;

  Place centre;
  double incidence_degrees = 0;      // at the centre
  double average_height_metres = 0;  // above the ellipsoid
  std::vector<Place> corners;        // in the annotation's order
  // The scene's sides, across its lines and along them; from the corners, where it has them.
  struct Extent {
    double lines_metres = 0;
    double samples_metres = 0;
  };
  std::optional<Extent> extent;

  // Of the first image raster, which holds for every image.
  struct Raster {
    std::int32_t lines = 0;
    std::int32_t samples = 0;
    double line_spacing_metres = 0;
    double sample_spacing_metres = 0;  // in slant range where ground_spacing_metres is there
    // Of a complex image's samples on the ground, in near and far range.
    std::optional<std::array<double, 2>> ground_spacing_metres;
    double azimuth_resolution_metres = 0;
    double ground_range_resolution_metres = 0;
  };
  std::optional<Raster> raster;
  bool is_on_map = false;  // its lines run west to east, not across the flight

  std::vector<ImageCalibration> calibration;  // one entry an image, in the annotation's order
};

// The facts of an open product; nothing where its plug-in has no companion that tells them. Values
// that a lenient open passes over are as they stand. Any thread may ask.
GRIDKIT_API std::optional<ProductFacts> facts_of(const Product& product);

// The same of the product at that path, whose image files need not be there.
GRIDKIT_API std::optional<ProductFacts> find_product_facts(const Plugin& plugin,
                                                           const std::string& path);

}  // namespace gridkit
