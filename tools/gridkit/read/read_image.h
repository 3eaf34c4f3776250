#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "gridkit/image_reader.h"
#include "gridkit/product.h"
#include "tools/gridkit/read/calibration.h"
#include "tools/gridkit/read/output_file.h"

// A layer or a window of it into an image file.

enum class PixelKind { own, stretched };

struct ImageRequest {
  std::string layer;
  std::string output;  // a file's path, or standard_output
  OutputFormat format = OutputFormat::geotiff;
  std::optional<gridkit::Window> window;  // nothing: the whole layer
  PixelKind kind = PixelKind::own;
  std::optional<CalibrationRequest> calibration;    // takes the place of the kind
  std::optional<gridkit::Compression> compression;  // of GTiff and COG; nothing: the format's own
  int threads = 0;                                  // that compress; 0: one on each processor
  bool delays = true;  // places have those of the signal where the product tells them
  bool overwrite = false;
  bool quiet = false;
};

// Reads and writes in one pass of bounded memory. Lines that stayed without data are told in one
// line and named in the file's metadata. Throws gridkit::Error, or Interrupted, and leaves no file
// then.
void read_image(const gridkit::Product& product, const ImageRequest& request);
