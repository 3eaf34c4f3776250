#include "gridkit/indexed_png.h"

#include <algorithm>
#include <span>

#include "gridkit/writers/png_support.h"

namespace gridkit {

namespace {

[[noreturn]] void refuse(png_structp, png_const_charp message) {
  throw Error(std::string("a picture cannot be encoded: ") + message);
}

void append(png_structp png, png_bytep data, png_size_t count) {
  auto& bytes = *static_cast<std::vector<std::byte>*>(png_get_io_ptr(png));
  const auto added = std::as_bytes(std::span(data, count));
  bytes.insert(bytes.end(), added.begin(), added.end());
}

void flush_nothing(png_structp) {}

void check(const IndexedPicture& picture) {
  constexpr std::size_t most_colours = 256;
  const auto expected = static_cast<std::size_t>(std::max(picture.width, 0)) *
                        static_cast<std::size_t>(std::max(picture.height, 0));
  if (expected == 0 || picture.pixels.size() != expected) {
    throw Error("a picture cannot be encoded: its pixels do not fill its size");
  }
  const auto highest = *std::max_element(picture.pixels.begin(), picture.pixels.end());
  if (picture.palette.size() > most_colours || highest >= picture.palette.size()) {
    throw Error("a picture cannot be encoded: its palette does not hold its pixels");
  }
}

void set_palette(const PngHandles& handles, const std::vector<Colour>& palette) {
  std::vector<png_color> colours;
  std::vector<png_byte> alphas;
  for (const Colour& colour : palette) {
    colours.push_back({colour.red, colour.green, colour.blue});
    alphas.push_back(colour.alpha);
  }
  const auto count = static_cast<int>(palette.size());
  png_set_PLTE(handles.png, handles.info, colours.data(), count);
  png_set_tRNS(handles.png, handles.info, alphas.data(), count, nullptr);
}

}  // namespace

std::vector<std::byte> encode_png(const IndexedPicture& picture) {
  check(picture);
  std::vector<std::byte> bytes;
  PngHandles handles(nullptr, refuse);
  png_set_write_fn(handles.png, &bytes, append, flush_nothing);
  png_set_IHDR(handles.png, handles.info, static_cast<png_uint_32>(picture.width),
               static_cast<png_uint_32>(picture.height), 8, PNG_COLOR_TYPE_PALETTE,
               PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
  set_palette(handles, picture.palette);
  for (const auto& [key, value] : picture.texts) handles.add_text(key, value);
  png_write_info(handles.png, handles.info);
  const auto width = static_cast<std::size_t>(picture.width);
  for (std::size_t at = 0; at < picture.pixels.size(); at += width) {
    png_write_row(handles.png, &picture.pixels[at]);
  }
  png_write_end(handles.png, handles.info);
  return bytes;
}

}  // namespace gridkit
