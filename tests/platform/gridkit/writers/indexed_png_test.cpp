#include "gridkit/indexed_png.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using gridkit::Colour;
using gridkit::IndexedPicture;

IndexedPicture small() {
  return {3, 2, {0, 1, 2, 2, 1, 0}, {{0, 0, 0, 0}, {10, 20, 30, 255}, {1, 2, 3, 128}}, {}};
}

std::string encoded(const IndexedPicture& picture) {
  const auto bytes = gridkit::encode_png(picture);
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

TEST(IndexedPng, HoldsTheSizeThePaletteAndTheTexts) {
  IndexedPicture picture = small();
  picture.texts = {{"Source", "here"}};
  const std::string file = encoded(picture);
  EXPECT_EQ("\x89PNG\r\n\x1a\n", file.substr(0, 8));
  using namespace std::string_literals;
  // Width, height, 8 bits, a palette, and three zeros: compression, filter, no interlacing.
  EXPECT_NE(std::string::npos, file.find("IHDR\0\0\0\3\0\0\0\2\x08\x03\0\0\0"s));
  EXPECT_NE(std::string::npos, file.find("PLTE\0\0\0\x0a\x14\x1e\1\2\3"s));
  EXPECT_NE(std::string::npos, file.find("tRNS\0\xff\x80"s));
  EXPECT_NE(std::string::npos, file.find("tEXtSource\0here"s));
}

TEST(IndexedPng, EndsWithItsEmptyLastPart) {
  using namespace std::string_literals;
  // Its checksum, of the four letters alone, is the same in every PNG file.
  EXPECT_TRUE(encoded(small()).ends_with("\0\0\0\0IEND\xae\x42\x60\x82"s));
}

TEST(IndexedPng, TellsTextsBeyondAsciiAsUtf8) {
  IndexedPicture picture = small();
  picture.texts = {{"Source", "Köln"}};
  using namespace std::string_literals;
  // An international text: not compressed, and of no language and no translated key.
  EXPECT_NE(std::string::npos, encoded(picture).find("iTXtSource\0\0\0\0\0K\xc3\xb6ln"s));
}

TEST(IndexedPng, RefusesPixelsThatDoNotFillTheSize) {
  IndexedPicture picture = small();
  picture.pixels.pop_back();
  EXPECT_THROW(gridkit::encode_png(picture), gridkit::Error);
  EXPECT_THROW(gridkit::encode_png({}), gridkit::Error);
  picture.width = -3;
  picture.height = -2;
  EXPECT_THROW(gridkit::encode_png(picture), gridkit::Error);
}

TEST(IndexedPng, RefusesPixelsOutsideThePalette) {
  IndexedPicture picture = small();
  picture.pixels[4] = 3;
  EXPECT_THROW(gridkit::encode_png(picture), gridkit::Error);
  picture = small();
  picture.palette.resize(257);
  EXPECT_THROW(gridkit::encode_png(picture), gridkit::Error);
}

}  // namespace
