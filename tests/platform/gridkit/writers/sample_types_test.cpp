#include <gtest/gtest.h>

#include <array>
#include <complex>
#include <cstdint>
#include <string>
#include <vector>

#include "gridkit/raster_writer.h"
#include "tests/platform/gridkit/writers/read_with_gdal.h"
#include "tests/support/scratch_folder.h"

namespace {

using gridkit::Compression;
using gridkit::SampleType;

// Images of 2 lines and 3 samples a line.
const std::vector<std::complex<std::int16_t>> integers = {{1, -2}, {0, 0},  {32767, -32768},
                                                          {-7, 8}, {9, 10}, {11, -12}};
const std::vector<std::complex<float>> floats = {{0.5F, -2}, {0, 0},  {3e38F, -1e-38F},
                                                 {-7, 8},    {9, 10}, {11, -12}};

class SampleTypes : public testing::Test {
 protected:
  template <class Sample>
  void write(const decltype(&gridkit::create_geotiff) create, SampleType type,
             const std::vector<Sample>& image) {
    const auto writer = create(path, 3, 2, {.type = type});
    const auto samples = std::as_bytes(std::span(image));
    writer->write_lines(samples.first(samples.size() / 2), 1);
    writer->write_lines(samples.subspan(samples.size() / 2), 1);
    writer->finish();
  }

  const ScratchFolder scratch;
  const std::string path = scratch / "x";
};

TEST_F(SampleTypes, AGeoTiffHoldsComplexSamplesOfBothKinds) {
  for (auto* create : {gridkit::create_geotiff, gridkit::create_cog}) {
    write(create, SampleType::cs16, integers);
    const GdalImage of_integers(path, "GTiff");
    EXPECT_EQ(GDT_CInt16, of_integers.type());
    EXPECT_EQ(integers, of_integers.samples<std::complex<std::int16_t>>());
    write(create, SampleType::cf32, floats);
    const GdalImage of_floats(path, "GTiff");
    EXPECT_EQ(GDT_CFloat32, of_floats.type());
    EXPECT_EQ(floats, of_floats.samples<std::complex<float>>());
  }
}

TEST_F(SampleTypes, AnEnviFileHoldsComplexSamplesAsFloats) {
  write(gridkit::create_envi, SampleType::cf32, floats);
  const GdalImage of_floats(path, "ENVI");
  EXPECT_EQ(GDT_CFloat32, of_floats.type());
  EXPECT_EQ(floats, of_floats.samples<std::complex<float>>());
  write(gridkit::create_envi, SampleType::cs16, integers);
  const GdalImage of_integers(path, "ENVI");
  EXPECT_EQ(GDT_CFloat32, of_integers.type());
  std::vector<std::complex<float>> widened;
  for (const auto& sample : integers) widened.emplace_back(sample.real(), sample.imag());
  EXPECT_EQ(widened, of_integers.samples<std::complex<float>>());
}

// Pairs of the compression and GDAL's name of it.
struct Named {
  Compression compression;
  const char* name;
};
constexpr std::array named = {Named{Compression::none, ""}, Named{Compression::deflate, "DEFLATE"},
                              Named{Compression::zstd, "ZSTD"}, Named{Compression::lzw, "LZW"}};

constexpr std::int32_t width = 530;
constexpr std::int32_t height = 559;

template <class Sample, class Make>
std::vector<Sample> image_of(Make make) {
  std::vector<Sample> image;
  for (std::int32_t i = 0; i < width * height; ++i) image.push_back(make(i % width, i / width));
  return image;
}

// Written in portions of lines that fit no strip and no tile.
template <class Sample>
void expect_every_compression_keeps(const std::string& path, SampleType type,
                                    const std::vector<Sample>& image) {
  for (auto* create : {gridkit::create_geotiff, gridkit::create_cog}) {
    for (const auto& [compression, name] : named) {
      gridkit::RasterOptions options;
      options.type = type;
      options.compression = compression;
      const auto writer = create(path, width, height, options);
      constexpr std::int32_t portion = 43;
      static_assert(height % portion == 0);
      const auto bytes = std::as_bytes(std::span(image));
      const std::size_t portion_bytes = bytes.size() / (height / portion);
      for (std::size_t at = 0; at < bytes.size(); at += portion_bytes) {
        writer->write_lines(bytes.subspan(at, portion_bytes), portion);
      }
      writer->finish();
      const GdalImage file(path, "GTiff");
      EXPECT_EQ(name, file.metadata("COMPRESSION", "IMAGE_STRUCTURE"));
      EXPECT_EQ(image, file.samples<Sample>()) << name;
    }
  }
}

TEST_F(SampleTypes, EveryCompressionKeepsRealSamples) {
  expect_every_compression_keeps(path, SampleType::u8, image_of<std::uint8_t>([](int x, int y) {
                                   return static_cast<std::uint8_t>(x * y);
                                 }));
  expect_every_compression_keeps(path, SampleType::s16, image_of<std::int16_t>([](int x, int y) {
                                   return static_cast<std::int16_t>(x * 90 - y * 70);
                                 }));
  expect_every_compression_keeps(path, SampleType::f32, image_of<float>([](int x, int y) {
                                   return static_cast<float>(x) / static_cast<float>(y + 1);
                                 }));
}

TEST_F(SampleTypes, EveryCompressionKeepsComplexSamples) {
  expect_every_compression_keeps(
      path, SampleType::cs16, image_of<std::complex<std::int16_t>>([](int x, int y) {
        return std::complex(static_cast<std::int16_t>(x), static_cast<std::int16_t>(-y));
      }));
  expect_every_compression_keeps(
      path, SampleType::cf32, image_of<std::complex<float>>([](int x, int y) {
        return std::complex(static_cast<float>(x) / 3, static_cast<float>(-y));
      }));
}

TEST_F(SampleTypes, LinesOfACompressedFileMayBeLeftOut) {
  gridkit::RasterOptions options;
  options.compression = Compression::deflate;
  const auto writer = gridkit::create_geotiff(path, 3, 5, options);
  const std::vector<std::uint16_t> line = {7, 8, 9};
  writer->write_lines(std::as_bytes(std::span(line)), 1);
  writer->finish();
  const std::vector<std::uint16_t> all = {7, 8, 9, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};
  EXPECT_EQ(all, GdalImage(path, "GTiff").samples<std::uint16_t>());
}

}  // namespace
