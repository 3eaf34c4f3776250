#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "gridkit/image_reader.h"

// What the pixels of a layer measure.
enum class PixelMeaning {
  magnitude,  // unsigned digital numbers, proportional to the root of the intensity
  phase,      // signed angles, pi at 32768
  power,      // backscatter, which may be below 0 where noise was subtracted
};

// Columns and lines of a picture.
struct PictureSize {
  std::int32_t width = 0;
  std::int32_t height = 0;
};

// Distance between neighbouring pixels on the ground, in metres, along a line and across lines.
struct GroundSpacing {
  double sample = 1;
  double line = 1;
};

// The size of a picture of an image, at most `longest` pixels on its longer side, with pixels that
// are square on the ground; no side has more pixels than the image's.
PictureSize fitting_size(PictureSize image, GroundSpacing spacing, std::int32_t longest);

// A picture before it is coloured: [height][width] values, not-a-number where there is no data.
struct FloatPicture {
  PictureSize size;
  std::vector<float> values;  // root mean square of the digital numbers, radians, or mean powers
};

// Reduces an image to a picture while its lines go by: each pixel of the picture is the mean of the
// image's pixels that fall into its cell, of their intensities for magnitudes, of their unit
// phasors for phases, and of themselves for powers. Pixel s of n falls into column floor(s * width
// / n), and lines likewise. Memory: the picture and one line of sums.
class Multilook {
 public:
  // `picture` is no larger than `image` on either side.
  Multilook(PixelMeaning meaning, PictureSize image, PictureSize picture);

  // The image's next lines, [lines][image width]: of magnitudes or phases, and of powers.
  void add(std::span<const std::uint16_t> pixels, std::int32_t lines);
  void add(std::span<const float> powers, std::int32_t lines);

  // The picture, after the last line. Its cells are without data where nothing but zeros
  // fell into them, and in every line that one of the `missing` lines of the image,
  // which came as zeros in part or in whole, falls into.
  FloatPicture finish(std::span<const gridkit::LineRange> missing);

 private:
  template <class Pixel>
  void add_lines(std::span<const Pixel> pixels, std::int32_t lines);
  void add_line(std::span<const std::uint16_t> pixels);
  void add_line(std::span<const float> powers);
  void complete_line();
  std::int32_t row_of(std::int32_t line) const;

  PixelMeaning meaning_;
  PictureSize image_;
  FloatPicture picture_;
  std::vector<std::int32_t> column_starts_;  // first pixel of each column's cell, and the width
  std::vector<std::uint64_t> intensities_;   // sums of one line of the picture
  std::vector<double> powers_;
  std::vector<double> cosines_;
  std::vector<double> sines_;
  std::vector<float> phasors_;  // cosine and sine of every phase
  std::int32_t next_line_ = 0;  // of the image
};
