#pragma once

#include <string>

#include <png.h>

namespace gridkit {

// What libpng needs to write a picture: its two structures, freed together.
//
// libpng reports by a callback that must not return; throwing from it is what its C++ users do, and
// the library is built with unwind tables on Debian. Its warnings are passed over.
struct PngHandles {
  // `context` is what png_get_error_ptr gives to `refuse`.
  PngHandles(void* context, png_error_ptr refuse);
  PngHandles(const PngHandles&) = delete;
  PngHandles& operator=(const PngHandles&) = delete;
  ~PngHandles();

  void add_text(const std::string& key, const std::string& value);

  png_structp png = nullptr;
  png_infop info = nullptr;
};

}  // namespace gridkit
