#include "picture/multilook.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <numbers>
#include <vector>

namespace {

using Pixels = std::vector<std::uint16_t>;

FloatPicture reduced(PixelMeaning meaning, PictureSize image, PictureSize picture,
                     const Pixels& pixels, const std::vector<gridkit::LineRange>& missing = {}) {
  Multilook looks(meaning, image, picture);
  looks.add(pixels, image.height);
  return looks.finish(missing);
}

std::uint16_t phase(double degrees) {
  return static_cast<std::uint16_t>(static_cast<std::int16_t>(degrees / 180 * 32768));
}

TEST(FittingSize, KeepsTheGroundsAspect) {
  // 1000 m by 4000 m: 250 by 1000 pixels of 4 m.
  const PictureSize size = fitting_size({2000, 1000}, {0.5, 4}, 1000);
  EXPECT_EQ(250, size.width);
  EXPECT_EQ(1000, size.height);
}

TEST(FittingSize, NeverHasMorePixelsThanTheImage) {
  // Pixels of 2 m, since there are no more lines than 100.
  const PictureSize size = fitting_size({100, 100}, {1, 2}, 4096);
  EXPECT_EQ(50, size.width);
  EXPECT_EQ(100, size.height);
}

TEST(FittingSize, KeepsAPixelOfANarrowImage) {
  const PictureSize size = fitting_size({1, 100000}, {1, 1}, 16);
  EXPECT_EQ(1, size.width);
  EXPECT_EQ(16, size.height);
}

TEST(Multilook, TakesTheRootOfTheMeanIntensity) {
  // (9 + 16 + 0 + 25) / 4 = 12.5 and (1 + 1 + 49 + 49) / 4 = 25.
  const auto picture =
      reduced(PixelMeaning::magnitude, {4, 2}, {2, 1}, {3, 4, 1, 1, 0, 5, 7, 7}).values;
  ASSERT_EQ(2U, picture.size());
  EXPECT_FLOAT_EQ(std::sqrt(12.5F), picture[0]);
  EXPECT_FLOAT_EQ(5, picture[1]);
}

TEST(Multilook, EveryPixelFallsIntoOneCell) {
  // Five samples in two columns: floor(s * 2 / 5) is 0 0 0 1 1; three lines in two rows: 0 0 1.
  const auto picture = reduced(PixelMeaning::magnitude, {5, 3}, {2, 2},
                               {1, 1, 1, 2, 2, 1, 1, 1, 2, 2, 3, 3, 3, 4, 4})
                           .values;
  EXPECT_EQ((std::vector<float>{1, 2, 3, 4}), picture);
}

TEST(Multilook, HoldsTheLargestSums) {
  constexpr std::int32_t size = 512;
  const auto picture = reduced(PixelMeaning::magnitude, {size, size}, {1, 1},
                               Pixels(std::size_t{size} * size, 65535))
                           .values;
  EXPECT_EQ(65535, picture.at(0));
}

TEST(Multilook, LinesMayComeInAnyPortions) {
  const Pixels pixels = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10};
  const auto whole = reduced(PixelMeaning::magnitude, {2, 5}, {1, 2}, pixels).values;
  Multilook looks(PixelMeaning::magnitude, {2, 5}, {1, 2});
  const std::span all(pixels);
  looks.add(all.first(2), 1);
  looks.add(all.subspan(2, 6), 3);
  looks.add(all.subspan(8), 1);
  EXPECT_EQ(whole, looks.finish({}).values);
}

TEST(Multilook, TakesTheMeanDirectionOfPhases) {
  // Around 180 degrees a mean of the numbers would give 0.
  const auto picture =
      reduced(PixelMeaning::phase, {4, 1}, {2, 1}, {phase(170), phase(-170), phase(10), phase(50)})
          .values;
  EXPECT_NEAR(std::numbers::pi, std::abs(picture[0]), 1e-4);
  EXPECT_NEAR(std::numbers::pi / 6, picture[1], 1e-4);
}

TEST(Multilook, CellsOfZeroMagnitudesAreWithoutData) {
  const auto picture = reduced(PixelMeaning::magnitude, {4, 1}, {2, 1}, {0, 0, 0, 1}).values;
  EXPECT_TRUE(std::isnan(picture[0]));
  EXPECT_FALSE(std::isnan(picture[1]));
}

TEST(Multilook, TakesTheMeanOfPowers) {
  Multilook looks(PixelMeaning::power, {4, 2}, {2, 1});
  looks.add(std::vector<float>{3, 4, 0, 0}, 1);
  looks.add(std::vector<float>{-9, -4, 0, 0}, 1);
  const auto picture = looks.finish({}).values;
  EXPECT_EQ(picture[0], -1.5F);
  EXPECT_TRUE(std::isnan(picture[1]));
}

TEST(Multilook, RowsOfMissingLinesAreWithoutData) {
  for (const auto meaning : {PixelMeaning::magnitude, PixelMeaning::phase}) {
    const auto picture = reduced(meaning, {1, 8}, {1, 4}, Pixels(8, 7), {{3, 4}}).values;
    EXPECT_FALSE(std::isnan(picture[0]));
    EXPECT_TRUE(std::isnan(picture[1]));
    EXPECT_TRUE(std::isnan(picture[2]));
    EXPECT_FALSE(std::isnan(picture[3]));
  }
}

}  // namespace
