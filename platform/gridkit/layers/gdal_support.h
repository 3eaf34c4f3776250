#pragma once

#include <string>

#include "gridkit/services/plain_locale.h"

namespace gridkit {

// Registers GDAL's GeoTIFF driver once for the process, unless the program has registered it. It is
// the one driver that reading needs, and stays registered: open files belong to it.
void register_geotiff();

// Registers the driver that writes Cloud-Optimised GeoTIFF too, once for the process.
void register_cog();

// Stands around every use of GDAL: while it lives, GDAL's error messages of this thread are
// collected instead of printed, and are told in the locale "C".
class GdalMessages {
 public:
  GdalMessages();
  GdalMessages(const GdalMessages&) = delete;
  GdalMessages& operator=(const GdalMessages&) = delete;
  ~GdalMessages();

  // The first error since construction, or `otherwise`.
  std::string first_or(const char* otherwise) const;

  bool any() const { return !first_.empty(); }

  // The first error, in plain words where the operating system refused to write.
  std::string reason() const;

 private:
  static void collect(int kind, int number, const char* message);

  PlainLocale plain_;
  std::string first_;
  int os_error_ = 0;  // the system's last error when the first came
};

}  // namespace gridkit
