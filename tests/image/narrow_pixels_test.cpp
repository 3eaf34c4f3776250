#include "image/narrow_pixels.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace {

TEST(Narrowing, TruncatesAndKeepsTheLowBits) {
  const std::vector<double> values = {65535.0, 70000.9, 0.99, -1.5, 1e300, std::nan(""), -1e300};
  gkl_PixelRect rect{const_cast<double*>(values.data()), 56, 8, 7, 1, gkl_PixelF64};
  std::vector<std::uint16_t> pixels(7, 7);
  tsx_NarrowPixels(rect, 7, 1, pixels.data());
  EXPECT_EQ(pixels[0], 65535);
  EXPECT_EQ(pixels[1], 4464) << "70000 - 65536";
  EXPECT_EQ(pixels[2], 0);
  EXPECT_EQ(pixels[3], 65535) << "-1 in 16 bits";
  EXPECT_EQ(pixels[4], 0) << "no integer of 64 bits";
  EXPECT_EQ(pixels[5], 0);
  EXPECT_EQ(pixels[6], 0);
}

TEST(Narrowing, FollowsBothStrides) {
  // Two lines of two pixels, every other value, a value between the lines.
  const std::vector<double> values = {1, -9, 2, -9, -9, 3, -9, 4, -9};
  gkl_PixelRect rect{const_cast<double*>(values.data()), 40, 16, 2, 2, gkl_PixelF64};
  std::vector<std::uint16_t> pixels(4);
  tsx_NarrowPixels(rect, 2, 2, pixels.data());
  EXPECT_EQ(pixels, (std::vector<std::uint16_t>{1, 2, 3, 4}));
}

}  // namespace
