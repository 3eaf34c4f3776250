#include "gridkit/writers/png_support.h"

#include <algorithm>
#include <new>

namespace gridkit {

namespace {

void ignore_warning(png_structp, png_const_charp) {}

bool is_ascii(const std::string& text) {
  return std::all_of(text.begin(), text.end(),
                     [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

}  // namespace

PngHandles::PngHandles(void* context, png_error_ptr refuse)
    : png(png_create_write_struct(PNG_LIBPNG_VER_STRING, context, refuse, ignore_warning)) {
  if (png != nullptr) info = png_create_info_struct(png);
  if (info != nullptr) return;
  png_destroy_write_struct(&png, nullptr);
  throw std::bad_alloc();
}

PngHandles::~PngHandles() {
  png_destroy_write_struct(&png, &info);
}

// Plain texts are Latin-1, international ones UTF-8.
void PngHandles::add_text(const std::string& key, const std::string& value) {
  png_text text{};
  text.compression = is_ascii(value) ? PNG_TEXT_COMPRESSION_NONE : PNG_ITXT_COMPRESSION_NONE;
  text.key = const_cast<char*>(key.c_str());
  text.text = const_cast<char*>(value.c_str());
  png_set_text(png, info, &text, 1);
}

}  // namespace gridkit
