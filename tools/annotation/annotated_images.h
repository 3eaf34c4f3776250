#pragma once

#include <array>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

// What an annotation says of its image files, whatever its schema version.

// Of a map-projected image. Eastings and northings are in metres.
struct AnnotatedMap {
  std::string datum;       // such as "WGS84"
  std::string projection;  // such as "UTM"
  std::string zone;        // such as "32"
  double centre_latitude = 0;
  double centre_northing = 0;
  std::array<double, 2> spacing{};      // of pixels, along easting and northing
  std::array<double, 2> upper_left{};   // easting, northing of the first pixel
  std::array<double, 2> lower_right{};  // of the last one
};

struct AnnotatedImage {
  std::filesystem::path file;  // below the annotation's folder
  std::int64_t bytes = 0;      // below 1 where the annotation leaves it open
};

struct AnnotatedImages {
  std::string format;  // "COSAR", "GEOTIFF" or "UNDEFINED"
  std::int32_t layers = 0;
  // Of the first image raster, which readers apply to every image.
  std::int32_t lines = 0;
  std::int32_t samples = 0;
  std::int32_t bits = 0;
  std::vector<AnnotatedImage> files;
  std::optional<AnnotatedMap> map;  // where the annotation has a map's parameters
};

// Nothing when the file does not bind to the schema ("3.4", "3.5" or "4.0").
std::optional<AnnotatedImages> read_annotated_images(const std::string& path,
                                                     const std::string& schema);
