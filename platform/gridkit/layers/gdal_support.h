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

  bool any() const { return !first_.empty(); }

  // The first error, in plain words where the operating system refused to write.
  std::string reason() const;

 private:
  static void collect(int kind, int number, const char* message);

  std::string first_;
  int os_error_ = 0;  // the system's last error when the first came
};

}  // namespace gridkit
