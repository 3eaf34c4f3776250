#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tools/gridkit/host.h"

// The sub-commands. Each writes its results to standard output and gives the exit status; what
// refuses its input is a gridkit::Error.

// Every format the host can open.
int list_formats(const Host& host);

// What a product is and which layers it has.
int show_info(const Host& host, const std::string& path, bool as_json);

struct ReadRequest {
  std::string path;
  std::string layer;
  std::string output;                // GeoTIFF, or PNG where the name ends in .png
  std::string format;                // "", "GTiff" or "PNG"
  std::vector<std::int32_t> window;  // column, line, width, height; empty: the whole layer
  bool stretch = false;              // 8 bits for the eye instead of the pixels' own values
  bool quiet = false;
};

// A layer or a window of it into an image file. Lines that stayed without data are told in one line
// and named in the file's metadata.
int read_image(const Host& host, const ReadRequest& request);

// One block as raw 16-bit pixels in host order; status 3 where the plug-in has no data for it.
int read_raw_block(const Host& host, const std::string& path, const std::string& layer,
                   std::int32_t row, std::int32_t column);
