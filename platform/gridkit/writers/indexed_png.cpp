#include "gridkit/indexed_png.h"

#include <algorithm>
#include <new>
#include <span>

#include <zlib.h>

#include "gridkit/writers/png_parts.h"

namespace gridkit {

namespace {

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

void add_palette(PngParts& parts, const std::vector<Colour>& palette) {
  std::vector<std::uint8_t> colours;
  std::vector<std::uint8_t> alphas;
  for (const Colour& colour : palette) {
    colours.insert(colours.end(), {colour.red, colour.green, colour.blue});
    alphas.push_back(colour.alpha);
  }
  parts.chunk("PLTE", std::as_bytes(std::span(colours)));
  parts.chunk("tRNS", std::as_bytes(std::span(alphas)));
}

// Each line led by 0: stored as it is, which serves numbers of a palette best.
std::vector<std::byte> compressed_lines(const IndexedPicture& picture) {
  const auto width = static_cast<std::ptrdiff_t>(picture.width);
  std::vector<std::uint8_t> lines;
  lines.reserve(picture.pixels.size() + static_cast<std::size_t>(picture.height));
  for (auto line = picture.pixels.begin(); line != picture.pixels.end(); line += width) {
    lines.push_back(0);
    lines.insert(lines.end(), line, line + width);
  }
  uLongf size = compressBound(lines.size());
  std::vector<std::byte> result(size);
  auto* const bytes = reinterpret_cast<Bytef*>(result.data());
  if (::compress(bytes, &size, lines.data(), lines.size()) != Z_OK) throw std::bad_alloc();
  result.resize(size);
  return result;
}

}  // namespace

std::vector<std::byte> encode_png(const IndexedPicture& picture) {
  check(picture);
  std::vector<std::byte> bytes;
  PngParts parts([&](std::span<const std::byte> part) {
    bytes.insert(bytes.end(), part.begin(), part.end());
  });
  parts.header(picture.width, picture.height, 8, PngColour::palette);
  add_palette(parts, picture.palette);
  for (const auto& [key, value] : picture.texts) parts.text(key, value);
  parts.chunk("IDAT", compressed_lines(picture));
  parts.chunk("IEND", {});
  return bytes;
}

}  // namespace gridkit
