#include "lmx/text_position.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace lmx {

namespace {

// Moves a position over the bytes that follow it.
void advance(TextPosition& position, std::string_view bytes) {
  position.offset += bytes.size();
  if (const auto last_break = bytes.rfind('\n'); last_break != std::string_view::npos) {
    position.line += static_cast<std::uint64_t>(std::count(bytes.begin(), bytes.end(), '\n'));
    position.column = 1;
    bytes.remove_prefix(last_break + 1);
  }
  // Of a character in UTF-8 the first byte counts.
  position.column +=
      static_cast<std::uint64_t>(std::count_if(bytes.begin(), bytes.end(), [](char c) {
        return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U;
      }));
}

}  // namespace

TextPosition PositionFinder::position_of(std::uint64_t offset) {
  if (offset < found_.offset) found_ = {};
  std::array<char, 32768> buffer;
  while (found_.offset < offset) {
    const auto wanted = std::min<std::uint64_t>(buffer.size(), offset - found_.offset);
    const std::ptrdiff_t got =
        source_.read(found_.offset, std::span(buffer).first(static_cast<std::size_t>(wanted)));
    if (got <= 0) break;
    advance(found_, {buffer.data(), static_cast<std::size_t>(got)});
  }
  return found_;
}

}  // namespace lmx
