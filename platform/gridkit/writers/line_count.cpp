#include "gridkit/writers/line_count.h"

#include <utility>

#include "gridkit/error.h"
#include "gridkit/raster_writer.h"

namespace gridkit {

std::size_t sample_size(SampleType type) {
  switch (type) {
    case SampleType::u8:
      return 1;
    case SampleType::u16:
    case SampleType::s16:
      return 2;
    case SampleType::f32:
    case SampleType::cs16:
      return 4;
    case SampleType::cf32:
      return 8;
  }
  throw Error("a sample of an unknown type");
}

LineCount::LineCount(std::string path, std::int32_t width, std::int32_t height,
                     std::size_t sample_size)
    : path_(std::move(path)),
      width_(width),
      height_(height),
      line_bytes_(width < 1 ? 0 : sample_size * static_cast<std::size_t>(width)) {
  if (width < 1 || height < 1) throw Error(path_ + ": an image needs a positive size");
}

void LineCount::add(std::int32_t lines, std::size_t bytes) {
  if (lines < 0 || lines > height_ - next_line_ ||
      bytes != line_bytes_ * static_cast<std::size_t>(lines)) {
    throw Error(path_ + ": the lines do not fit the image");
  }
  next_line_ += lines;
}

}  // namespace gridkit
