#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>

#include "gridkit/raster_writer.h"
#include "tests/platform/gridkit/writers/read_with_gdal.h"
#include "tests/support/scratch_folder.h"

namespace {

namespace fs = std::filesystem;

using gridkit::SampleType;

constexpr std::int32_t width = 1500;
constexpr std::int32_t height = 1600;

// A third of it noise, a third smooth along and across lines, a third of one value; several MB, so
// that it is compressed in many pieces.
template <class Sample>
std::vector<Sample> varied_image() {
  std::mt19937 random(1);
  std::vector<Sample> image;
  for (std::int32_t y = 0; y < height; ++y) {
    for (std::int32_t x = 0; x < width; ++x) {
      const std::uint32_t value = y < height / 3       ? static_cast<std::uint32_t>(random())
                                  : y < 2 * height / 3 ? static_cast<std::uint32_t>(x + 3 * y)
                                                       : 77U;
      image.push_back(static_cast<Sample>(value));
    }
  }
  return image;
}

class PngFile : public testing::Test {
 protected:
  template <class Sample>
  void write(SampleType type, const std::vector<Sample>& image, int threads = 0) {
    gridkit::RasterOptions options;
    options.type = type;
    options.threads = threads;
    const auto writer = gridkit::create_png(path, width, height, options);
    const auto bytes = std::as_bytes(std::span(image));
    const std::size_t half = bytes.size() / 2;
    writer->write_lines(bytes.first(half), height / 2);
    writer->write_lines(bytes.subspan(half), height / 2);
    writer->finish();
  }
  std::string content() const {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }

  const ScratchFolder scratch;
  const std::string path = scratch / "x.png";
};

TEST_F(PngFile, HoldsEveryPixelOf8And16Bits) {
  const auto bytes = varied_image<std::uint8_t>();
  write(SampleType::u8, bytes);
  EXPECT_EQ(bytes, GdalImage(path, "PNG").samples<std::uint8_t>());
  const auto words = varied_image<std::uint16_t>();
  write(SampleType::u16, words);
  EXPECT_EQ(words, GdalImage(path, "PNG").samples<std::uint16_t>());
}

TEST_F(PngFile, HoldsSignedPixelsWith32768Added) {
  const auto pixels = varied_image<std::int16_t>();
  write(SampleType::s16, pixels);
  std::vector<std::uint16_t> shifted;
  for (const std::int16_t pixel : pixels) {
    shifted.push_back(static_cast<std::uint16_t>(pixel + 32768));
  }
  EXPECT_EQ(shifted, GdalImage(path, "PNG").samples<std::uint16_t>());
}

TEST_F(PngFile, IsTheSameByAnyNumberOfThreads) {
  const auto pixels = varied_image<std::uint16_t>();
  write(SampleType::u16, pixels, 1);
  const std::string by_one = content();
  for (const int threads : {2, 7, 1000}) {
    write(SampleType::u16, pixels, threads);
    EXPECT_TRUE(by_one == content()) << threads;
  }
}

TEST_F(PngFile, TakesLittleRoomForWhatIsSmoothOrOfOneValue) {
  const auto pixels = varied_image<std::uint16_t>();
  write(SampleType::u16, pixels);
  // A third is noise, which nothing makes smaller, and one piece of half a MiB, 11 % of the image,
  // is noise in part. The rest, 56 %, is differences of 0 and 1, whose bytes take a bit or less: 7
  // %.
  EXPECT_LT(fs::file_size(path), pixels.size() * 2 * 52 / 100);
}

TEST_F(PngFile, HasAtMostAMillionColumnsAndLines) {
  const auto refusal = [&](std::int32_t columns, std::int32_t lines) -> std::string {
    try {
      gridkit::create_png(path, columns, lines, {});
    } catch (const gridkit::Error& error) {
      return error.what();
    }
    return {};
  };
  const std::string words = path + ": a PNG has at most 1000000 columns and lines";
  EXPECT_EQ(words, refusal(1000001, 1));
  EXPECT_EQ(words, refusal(1, 1000001));
  EXPECT_EQ("", refusal(1000000, 1000000));
}

TEST_F(PngFile, TakesTextsBesideItsPixels) {
  const auto writer = gridkit::create_png(path, 2, 1, {});
  writer->add_metadata("PLAIN", "text");
  writer->add_metadata("BEYOND_ASCII", "Köln");
  const std::vector<std::uint16_t> line = {1, 2};
  writer->write_lines(std::as_bytes(std::span(line)), 1);
  writer->add_metadata("LATE", "after the pixels");
  writer->finish();
  const GdalImage file(path, "PNG");
  EXPECT_EQ("text", file.metadata("PLAIN"));
  EXPECT_EQ("Köln", file.metadata("BEYOND_ASCII"));
  EXPECT_EQ(line, file.samples<std::uint16_t>());
  // GDAL looks at those before the pixels alone.
  using namespace std::string_literals;
  EXPECT_NE(std::string::npos, content().find("tEXtLATE\0after the pixels"s));
}

TEST_F(PngFile, RefusesTextsWithoutAKeyOfUsualLength) {
  for (const std::string& key : {std::string(), std::string(80, 'k')}) {
    const auto writer = gridkit::create_png(path, 1, 1, {});
    const std::vector<std::uint16_t> line = {1};
    writer->write_lines(std::as_bytes(std::span(line)), 1);
    writer->add_metadata(key, "text");
    try {
      writer->finish();
      ADD_FAILURE() << "it is taken";
    } catch (const gridkit::Error& error) {
      EXPECT_EQ("the key of a PNG's text has 1 to 79 characters: \"" + key + '"',
                std::string(error.what()));
    }
  }
}

}  // namespace
