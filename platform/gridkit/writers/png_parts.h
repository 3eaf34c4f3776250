#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "gridkit/raster_writer.h"

namespace gridkit {

enum class PngColour : std::uint8_t { grey = 0, palette = 3 };

// The parts of a PNG file (ISO/IEC 15948) on their way to a sink of bytes. The order is the
// caller's: header, palette, pixels as the pieces of one zlib stream, texts, end.
class PngParts {
 public:
  // The sink gets the file's signature at once, and each part as it is called for.
  explicit PngParts(ByteSink sink);

  // Of an image that is not interlaced. Both sides are at least 1.
  void header(std::int32_t width, std::int32_t height, std::uint8_t bits, PngColour colour);

  // A text of up to 2^31 bytes in UTF-8, stored in the plain form where it is ASCII. Throws Error
  // for a key of no or of more than 79 characters.
  void text(const std::string& key, const std::string& value);

  // A part of any kind, such as "PLTE", "tRNS", "IDAT" and "IEND"; up to 2^31 - 1 bytes.
  void chunk(std::string_view kind, std::span<const std::byte> content);

 private:
  ByteSink sink_;
};

}  // namespace gridkit
