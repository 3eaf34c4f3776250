#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace gridkit {

// How far an image that is written line by line has come.
class LineCount {
 public:
  // Throws Error for an image without pixels.
  LineCount(std::string path, std::int32_t width, std::int32_t height, std::size_t sample_size);

  std::int32_t width() const { return width_; }
  std::int32_t height() const { return height_; }
  std::int32_t next_line() const { return next_line_; }
  bool is_complete() const { return next_line_ == height_; }
  std::size_t line_bytes() const { return line_bytes_; }

  // Counts lines that have so many bytes in all. Throws Error for lines that do not fit the image.
  void add(std::int32_t lines, std::size_t bytes);

 private:
  std::string path_;
  std::int32_t width_;
  std::int32_t height_;
  std::size_t line_bytes_;
  std::int32_t next_line_ = 0;
};

}  // namespace gridkit
