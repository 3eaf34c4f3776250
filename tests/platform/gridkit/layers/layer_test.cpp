#include "gridkit/layer.h"

#include <cpl_string.h>
#include <gdal.h>
#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "gridkit/raster_writer.h"
#include "tests/support/scratch_folder.h"

namespace {

namespace fs = std::filesystem;

constexpr int width = 7;
constexpr int height = 5;

class Layers : public testing::Test {
 protected:
  void SetUp() override {
    path = folder / "image.tif";
    const auto writer = gridkit::create_geotiff(path, width, height, {});
    std::vector<std::uint16_t> pixels;
    for (std::uint16_t i = 0; i < width * height; ++i)
      pixels.push_back(static_cast<std::uint16_t>(i + 1));
    writer->write_lines(std::as_bytes(std::span<const std::uint16_t>(pixels)), height);
    writer->finish();
  }

  // What an operation reported, empty for nothing.
  template <class Operation>
  static std::string report_of(Operation operation) {
    gke_Report* report = nullptr;
    operation(&report);
    const std::string message = report == nullptr ? "" : gke_ReportMessage(report);
    gke_DeleteErrorReportEx(&report);
    return message;
  }
  static gkl_Layer* open(const std::string& file) {
    gki_Instance* token = gki_GetInit(nullptr);
    gks_StringList* names = gkl_LayerGetNames(file.c_str(), token, nullptr);
    if (names == nullptr) return nullptr;
    gkl_Layer* layer = gkl_LayerOpen(names->strings[0], token, nullptr, 25, 0);
    gks_StringListDelete(names, nullptr);
    return layer;
  }
  const ScratchFolder scratch;
  const fs::path& folder = scratch.path();
  std::string path;
};

TEST_F(Layers, AreNamedByBandAndPath) {
  gks_StringList* names = gkl_LayerGetNames(path.c_str(), gki_GetInit(nullptr), nullptr);
  ASSERT_NE(names, nullptr);
  ASSERT_EQ(names->count, 1);
  EXPECT_EQ(names->strings[0], "1:" + path);
  gks_StringListDelete(names, nullptr);
}

TEST_F(Layers, GiveWindowsWithZerosOutside) {
  gkl_Layer* layer = open(path);
  ASSERT_NE(layer, nullptr);
  int32_t w = 0;
  int32_t h = 0;
  gkl_LayerSize(layer, &w, &h);
  EXPECT_EQ(w, width);
  EXPECT_EQ(h, height);
  for (const auto& [x, y] : {std::pair{0, 0}, {5, 3}, {-2, -1}, {100, 100}, {-50, 0}}) {
    gkl_PixelRect* rect = gkl_PixelRectCreate(4, 3, gkl_PixelF64, nullptr);
    EXPECT_EQ(report_of([&](auto* err) { gkl_LayerRead(layer, x, y, 4, 3, rect, err); }), "");
    for (int r = 0; r < 3; ++r) {
      for (int c = 0; c < 4; ++c) {
        const bool inside = x + c >= 0 && x + c < width && y + r >= 0 && y + r < height;
        const double expected = inside ? (y + r) * width + x + c + 1 : 0;
        double value = -1;
        std::memcpy(&value,
                    static_cast<char*>(rect->data) + rect->rowStride * r + rect->columnStride * c,
                    sizeof value);
        EXPECT_EQ(value, expected) << x << ' ' << y << ' ' << r << ' ' << c;
      }
    }
    gkl_PixelRectDelete(rect, nullptr);
  }
  gkl_LayerClose(layer, nullptr);
}

// The lowest and the highest number of each type, read as 64-bit floats; the third pixel of the
// window lies outside.
TEST_F(Layers, GiveEveryStoredTypeAsFloats) {
  const auto first_two = [&](gridkit::SampleType type, auto low, auto high) {
    const std::string file = folder / "typed.tif";
    gridkit::RasterOptions options;
    options.type = type;
    const auto writer = gridkit::create_geotiff(file, 2, 1, options);
    const decltype(low) pixels[] = {low, high};
    writer->write_lines(std::as_bytes(std::span(pixels)), 1);
    writer->finish();
    gkl_Layer* layer = open(file);
    gkl_PixelRect* rect = gkl_PixelRectCreate(3, 1, gkl_PixelF64, nullptr);
    EXPECT_EQ(report_of([&](auto* err) { gkl_LayerRead(layer, 0, 0, 3, 1, rect, err); }), "");
    std::vector<double> values(3);
    std::memcpy(values.data(), rect->data, 3 * sizeof(double));
    gkl_PixelRectDelete(rect, nullptr);
    gkl_LayerClose(layer, nullptr);
    return values;
  };
  EXPECT_EQ(first_two(gridkit::SampleType::u8, std::uint8_t{0}, std::uint8_t{255}),
            (std::vector<double>{0, 255, 0}));
  EXPECT_EQ(first_two(gridkit::SampleType::u16, std::uint16_t{0}, std::uint16_t{65535}),
            (std::vector<double>{0, 65535, 0}));
  EXPECT_EQ(first_two(gridkit::SampleType::s16, std::int16_t{-32768}, std::int16_t{32767}),
            (std::vector<double>{-32768, 32767, 0}));
}

// The image is 40 by 24 in tiles of 16 by 16, so that tiles reach past its right and bottom edges.
TEST_F(Layers, GiveWindowsAcrossTilesAsFloats) {
  constexpr int tiled_width = 40;
  constexpr int tiled_height = 24;
  const std::string file = folder / "tiled.tif";
  const auto pixel = [](int x, int y) { return static_cast<std::int16_t>(1000 * y - 13 * x); };
  {
    CPLStringList settings;
    for (const char* setting : {"TILED=YES", "BLOCKXSIZE=16", "BLOCKYSIZE=16"}) {
      settings.AddString(setting);
    }
    std::vector<std::int16_t> pixels;
    for (int y = 0; y < tiled_height; ++y) {
      for (int x = 0; x < tiled_width; ++x) pixels.push_back(pixel(x, y));
    }
    GDALDatasetH image = GDALCreate(GDALGetDriverByName("GTiff"), file.c_str(), tiled_width,
                                    tiled_height, 1, GDT_Int16, settings.List());
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(GDALRasterIO(GDALGetRasterBand(image, 1), GF_Write, 0, 0, tiled_width, tiled_height,
                           pixels.data(), tiled_width, tiled_height, GDT_Int16, 0, 0),
              CE_None);
    GDALClose(image);
  }
  struct Window {
    int x, y, w, h;
  };
  constexpr Window windows[] = {{0, 0, 16, 16},   {15, 15, 2, 2},   {3, 1, 37, 23},
                                {32, 16, 16, 16}, {-5, -3, 60, 40}, {16, 0, 1, 24}};
  gkl_Layer* layer = open(file);
  for (const auto& [first_x, first_y, w, h] : windows) {
    gkl_PixelRect* rect = gkl_PixelRectCreate(w, h, gkl_PixelF64, nullptr);
    EXPECT_EQ(
        report_of([&](auto* err) { gkl_LayerRead(layer, first_x, first_y, w, h, rect, err); }), "");
    for (int r = 0; r < h; ++r) {
      for (int c = 0; c < w; ++c) {
        const int x = first_x + c;
        const int y = first_y + r;
        const bool is_inside = x >= 0 && y >= 0 && x < tiled_width && y < tiled_height;
        double value = -1;
        std::memcpy(&value, static_cast<const char*>(rect->data) + rect->rowStride * r + 8 * c,
                    sizeof value);
        EXPECT_EQ(value, is_inside ? pixel(x, y) : 0) << "column " << x << ", line " << y;
      }
    }
    gkl_PixelRectDelete(rect, nullptr);
  }
  gkl_LayerClose(layer, nullptr);
}

// A rectangle of the caller's own: floats 12 bytes apart, on odd addresses.
TEST_F(Layers, FillRectanglesOfAnyStrides) {
  gkl_Layer* layer = open(path);
  std::vector<char> bytes(200, 0x55);
  gkl_PixelRect rect{bytes.data() + 1, 60, 12, 4, 3, gkl_PixelF64};
  EXPECT_EQ(report_of([&](auto* err) { gkl_LayerRead(layer, 1, 1, 4, 3, &rect, err); }), "");
  for (int r = 0; r < 3; ++r) {
    for (int c = 0; c < 4; ++c) {
      double value = -1;
      std::memcpy(&value, bytes.data() + 1 + 60 * r + 12 * c, sizeof value);
      EXPECT_EQ(value, (r + 1) * width + c + 2) << r << ' ' << c;
    }
  }
  // The same with floats side by side that lie on odd addresses.
  rect = {bytes.data() + 1, 33, 8, 4, 3, gkl_PixelF64};
  EXPECT_EQ(report_of([&](auto* err) { gkl_LayerRead(layer, 1, 1, 4, 3, &rect, err); }), "");
  double last = -1;
  std::memcpy(&last, bytes.data() + 1 + 33 * 2 + 8 * 3, sizeof last);
  EXPECT_EQ(last, 3 * width + 4 + 1);
  EXPECT_EQ(bytes[0], 0x55);
  gkl_LayerClose(layer, nullptr);
}

// The first line's pixels 3 to 5 in a rectangle of a type, as numbers.
template <class Sample>
std::vector<double> three_pixels(gkl_Layer* layer, int32_t pixel_type) {
  gkl_PixelRect* rect = gkl_PixelRectCreate(3, 1, pixel_type, nullptr);
  if (rect == nullptr) return {};
  gkl_LayerRead(layer, 2, 0, 3, 1, rect, nullptr);
  const auto* samples = static_cast<const Sample*>(rect->data);
  const std::vector<double> pixels(samples, samples + 3);
  gkl_PixelRectDelete(rect, nullptr);
  return pixels;
}

TEST_F(Layers, FillRectanglesOfEveryType) {
  gkl_Layer* layer = open(path);
  ASSERT_NE(layer, nullptr);
  const std::vector<double> expected = {3, 4, 5};
  EXPECT_EQ(three_pixels<std::uint8_t>(layer, gkl_PixelU8), expected);
  EXPECT_EQ(three_pixels<std::uint16_t>(layer, gkl_PixelU16), expected);
  EXPECT_EQ(three_pixels<std::int16_t>(layer, gkl_PixelS16), expected);
  EXPECT_EQ(three_pixels<float>(layer, gkl_PixelF32), expected);
  EXPECT_EQ(three_pixels<double>(layer, gkl_PixelF64), expected);
  gkl_LayerClose(layer, nullptr);
}

TEST_F(Layers, RefuseWindowsThatDoNotFitTheRectangle) {
  gkl_Layer* layer = open(path);
  ASSERT_NE(layer, nullptr);
  std::vector<double> pixels(6, -1);
  gkl_PixelRect rect{reinterpret_cast<char*>(pixels.data()), 24, 8, 3, 2, gkl_PixelF64};
  struct Window {
    int32_t width, height;
  };
  for (const auto [w, h] : {Window{4, 2}, {3, 3}, {0, 1}, {1, 0}, {-1, 1}}) {
    EXPECT_EQ(report_of([&](auto* err) { gkl_LayerRead(layer, 0, 0, w, h, &rect, err); }),
              "the window does not fit the rectangle")
        << w << " x " << h;
  }
  rect.pixelType = 99;
  EXPECT_EQ(report_of([&](auto* err) { gkl_LayerRead(layer, 0, 0, 1, 1, &rect, err); }),
            "the window does not fit the rectangle");
  EXPECT_EQ(pixels, std::vector<double>(6, -1));
  gkl_LayerClose(layer, nullptr);
}

TEST_F(Layers, AnswerNullHandlesWithAReport) {
  gkl_PixelRect* rect = gkl_PixelRectCreate(1, 1, gkl_PixelF64, nullptr);
  EXPECT_EQ(report_of([&](auto* err) { gkl_LayerRead(nullptr, 0, 0, 1, 1, rect, err); }),
            "no layer");
  gkl_PixelRectDelete(rect, nullptr);
  EXPECT_NE(report_of([](auto* err) { gkl_LayerClose(nullptr, err); }), "");
  EXPECT_NE(report_of([](auto* err) { gkl_PixelRectDelete(nullptr, err); }), "");
  EXPECT_NE(report_of([](auto* err) { gkl_LayerOpen(nullptr, gki_GetInit(nullptr), err, 25, 0); }),
            "");
}

TEST_F(Layers, RefuseWhatIsNoGeoTiffInsideTheReport) {
  const std::string text = folder / "text.tif";
  std::ofstream(text) << "not an image";
  const std::string picture = folder / "picture.png";
  const auto png = gridkit::create_png(picture, 2, 1, {});
  const std::uint16_t pixels[] = {1, 2};
  png->write_lines(std::as_bytes(std::span(pixels)), 1);
  png->finish();
  testing::internal::CaptureStderr();
  for (const std::string& file : {text, picture, std::string("/nonexistent.tif")}) {
    const std::string message =
        report_of([&](auto* err) { gkl_LayerGetNames(file.c_str(), gki_GetInit(nullptr), err); });
    EXPECT_TRUE(message.starts_with(file)) << message;
  }
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "") << "nothing is printed past the report";
}

TEST_F(Layers, ATruncatedFileFailsWhenItIsRead) {
  fs::resize_file(path, fs::file_size(path) - 40);
  gkl_Layer* layer = open(path);
  if (layer == nullptr) return;  // refused at once is as good
  gkl_PixelRect* rect = gkl_PixelRectCreate(width, height, gkl_PixelU16, nullptr);
  EXPECT_NE(report_of([&](auto* err) { gkl_LayerRead(layer, 0, 0, width, height, rect, err); }),
            "");
  gkl_PixelRectDelete(rect, nullptr);
  gkl_LayerClose(layer, nullptr);
}

// A file without stored pixels: bands of UInt16 in tiles of [16][tile_width], side by side or not.
void write_sparse(const std::string& file, int tile_width, int bands, const char* order) {
  GDALAllRegister();
  CPLStringList settings;
  settings.SetNameValue("TILED", "YES");
  settings.SetNameValue("BLOCKXSIZE", std::to_string(tile_width).c_str());
  settings.SetNameValue("BLOCKYSIZE", "16");
  settings.SetNameValue("INTERLEAVE", order);
  settings.SetNameValue("SPARSE_OK", "YES");
  GDALDatasetH image = GDALCreate(GDALGetDriverByName("GTiff"), file.c_str(), tile_width, 16, bands,
                                  GDT_UInt16, settings.List());
  ASSERT_NE(image, nullptr);
  GDALClose(image);
}

TEST_F(Layers, WhoseTilesTakeMoreThanAGibibyteAreRefused) {
  // Bytes of a tile: 2 * 16 * 2^19 = 2^24 a band; 64 bands side by side are 2^30, the most there
  // may be.
  constexpr int tile_width = 1 << 19;
  struct Case {
    int bands;
    const char* order;
    bool is_refused;
  };
  for (const Case& one : {Case{64, "PIXEL", false}, {65, "PIXEL", true}, {65, "BAND", false}}) {
    const std::string file = folder / ("sparse-" + std::to_string(one.bands) + one.order + ".tif");
    write_sparse(file, tile_width, one.bands, one.order);
    gkl_Layer* layer = nullptr;
    const std::string report = report_of([&](gke_Report** err) {
      layer = gkl_LayerOpen(("1:" + file).c_str(), gki_GetInit(nullptr), err, 0);
    });
    EXPECT_EQ(layer == nullptr, one.is_refused) << file;
    EXPECT_EQ(report, one.is_refused ? file +
                                           ": a tile or strip of it takes more than 1 GiB in "
                                           "memory; store the image in smaller ones"
                                     : "");
    if (layer != nullptr) gkl_LayerClose(layer, nullptr);
  }
}

TEST_F(Layers, RefuseUnknownOptionsTokensAndNames) {
  gki_Instance* token = gki_GetInit(nullptr);
  const std::string name = "1:" + path;
  EXPECT_NE(report_of([&](auto* err) { gkl_LayerOpen(name.c_str(), token, err, 26, 0); }), "");
  EXPECT_NE(report_of([&](auto* err) { gkl_LayerOpen(name.c_str(), nullptr, err, 25, 0); }), "");
  for (const std::string& bad : {"2:" + path, "0:" + path, path, std::string("1:")}) {
    EXPECT_NE(report_of([&](auto* err) { gkl_LayerOpen(bad.c_str(), token, err, 0); }), "") << bad;
  }
}

TEST(PixelRect, RefusesSizesItCannotHold) {
  EXPECT_EQ(gkl_PixelRectCreate(0, 1, gkl_PixelF64, nullptr), nullptr);
  EXPECT_EQ(gkl_PixelRectCreate(1, -1, gkl_PixelF64, nullptr), nullptr);
  EXPECT_EQ(gkl_PixelRectCreate(1, 1, 99, nullptr), nullptr);
  EXPECT_EQ(gkl_PixelRectCreate(INT32_MAX, INT32_MAX, gkl_PixelF64, nullptr), nullptr);
  // 8 x 1518500250 x 1518500250 bytes are 290948384 more than 64 bits count.
  EXPECT_EQ(gkl_PixelRectCreate(1518500250, 1518500250, gkl_PixelF64, nullptr), nullptr);
}

}  // namespace
