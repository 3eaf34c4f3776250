#pragma once

#include <string>

namespace gridkit {

// Registers GDAL's GeoTIFF driver once for the process.
void register_geotiff();

// Registers the driver that writes Cloud-Optimised GeoTIFF too, once for the process.
void register_cog();

// While it lives, GDAL's error messages of this thread are collected instead of printed.
class gdal_messages {
 public:
  gdal_messages();
  gdal_messages(const gdal_messages&) = delete;
  gdal_messages& operator=(const gdal_messages&) = delete;
  ~gdal_messages();

  // The first error since construction, or `otherwise`.
  std::string first_or(const char* otherwise) const;

 private:
  std::string first_;
};

}  // namespace gridkit
