#pragma once

#include <cstddef>
#include <cstdint>

#include "lmx/byte_sources.h"

namespace lmx {

struct TextPosition {
  std::uint64_t offset = 0;  // bytes before it
  std::uint64_t line = 1;    // from 1
  std::uint64_t column = 1;  // from 1, in characters of a UTF-8 document
};

// Finds lines and columns of bytes, which are asked for only when there is a fault to tell: the
// source is read again from its start, or from the place asked for before. In a UTF-16 document
// columns count bytes.
class PositionFinder {
 public:
  explicit PositionFinder(ByteSource& source) : source_(source) {}

  // The position of byte `offset`; of the source's last one where that does not give as many.
  TextPosition position_of(std::uint64_t offset);

 private:
  ByteSource& source_;
  TextPosition found_;  // the place asked for last
};

}  // namespace lmx
