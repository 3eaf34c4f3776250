#include "gridkit/writers/png_parts.h"

#include <algorithm>
#include <array>
#include <utility>

#include <zlib.h>

#include "gridkit/error.h"
#include "gridkit/writers/big_endian.h"

namespace gridkit {

namespace {

constexpr std::string_view signature = "\x89PNG\r\n\x1a\n";
constexpr std::size_t longest_key = 79;

bool is_ascii(const std::string& text) {
  return std::all_of(text.begin(), text.end(),
                     [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

uLong checksum(uLong before, std::span<const std::byte> bytes) {
  if (bytes.empty()) return before;  // at no place it would begin anew
  return crc32_z(before, reinterpret_cast<const Bytef*>(bytes.data()), bytes.size());
}

}  // namespace

PngParts::PngParts(ByteSink sink) : sink_(std::move(sink)) {
  sink_(std::as_bytes(std::span(signature)));
}

void PngParts::header(std::int32_t width, std::int32_t height, std::uint8_t bits,
                      PngColour colour) {
  // Its last three bytes: the one compression, the one set of filters, not interlaced.
  std::array<std::byte, 13> content{};
  const auto [w, h] = std::pair(big_endian(static_cast<std::uint32_t>(width)),
                                big_endian(static_cast<std::uint32_t>(height)));
  std::copy(w.begin(), w.end(), content.begin());
  std::copy(h.begin(), h.end(), content.begin() + 4);
  content[8] = std::byte{bits};
  content[9] = static_cast<std::byte>(colour);
  chunk("IHDR", content);
}

void PngParts::text(const std::string& key, const std::string& value) {
  if (key.empty() || key.size() > longest_key) {
    throw Error("the key of a PNG's text has 1 to 79 characters: \"" + key + '"');
  }
  // Plain texts are Latin-1, international ones UTF-8: not compressed, of no language and without
  // the key's translation.
  const bool is_plain = is_ascii(value);
  const std::string content = key + std::string(is_plain ? 1 : 5, '\0') + value;
  chunk(is_plain ? "tEXt" : "iTXt", std::as_bytes(std::span(content)));
}

void PngParts::chunk(std::string_view kind, std::span<const std::byte> content) {
  const auto name = std::as_bytes(std::span(kind));
  sink_(big_endian(static_cast<std::uint32_t>(content.size())));
  sink_(name);
  sink_(content);
  sink_(big_endian(static_cast<std::uint32_t>(checksum(checksum(0, name), content))));
}

}  // namespace gridkit
