// Whole magnitude images into compressed files, on every processor: Cloud-Optimised GeoTIFF beside
// GDAL's own writer of it with as many threads, PNG beside GDAL's, which is libpng on one thread.

#include <cpl_conv.h>
#include <cpl_string.h>
#include <gdal.h>

#include <cmath>
#include <cstdint>
#include <functional>
#include <memory>
#include <random>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

#include "bench/ratio.h"
#include "gridkit/raster_writer.h"
#include "tests/support/scratch_folder.h"
#include "tools/command_line/memory_use.h"

namespace {

constexpr std::int32_t size = 8192;
constexpr std::int32_t portion = 64;  // lines at a time, as rows of blocks bring them

struct Closer {
  void operator()(void* dataset) const { GDALClose(dataset); }
};
using Dataset = std::unique_ptr<void, Closer>;

Dataset opened(const std::string& path) {
  Dataset dataset(GDALOpen(path.c_str(), GA_ReadOnly));
  if (dataset == nullptr) throw std::runtime_error(path + ": cannot be opened");
  return dataset;
}

// Magnitudes of speckle whose mean changes over the scene, as land does.
std::vector<std::uint16_t> speckle() {
  std::mt19937 random(1);
  std::normal_distribution<float> part(0, 1);
  std::vector<std::uint16_t> pixels;
  pixels.reserve(std::size_t{size} * size);
  for (std::int32_t y = 0; y < size; ++y) {
    for (std::int32_t x = 0; x < size; ++x) {
      const float scale = 90 + 60 * std::sin(static_cast<float>(x + 2 * y) / 700);
      pixels.push_back(static_cast<std::uint16_t>(scale * std::hypot(part(random), part(random))));
    }
  }
  return pixels;
}

using Create = decltype(&gridkit::create_png);

void write(const std::vector<std::uint16_t>& pixels, Create create, const std::string& path) {
  gridkit::RasterOptions options;
  options.overview = gridkit::Overview::root_mean_square;
  const auto writer = create(path, size, size, options);
  const auto bytes = std::as_bytes(std::span(pixels));
  constexpr std::size_t step = std::size_t{2} * portion * size;
  for (std::size_t at = 0; at < bytes.size(); at += step) {
    writer->write_lines(bytes.subspan(at, step), portion);
  }
  writer->finish();
}

void copy(const std::string& from, const char* driver, const CPLStringList& settings,
          const std::string& to) {
  const Dataset source = opened(from);
  const Dataset copied(GDALCreateCopy(GDALGetDriverByName(driver), to.c_str(), source.get(), FALSE,
                                      settings.List(), GDALDummyProgress, nullptr));
  if (copied == nullptr) throw std::runtime_error(to + ": cannot be written");
}

void check(const std::vector<std::uint16_t>& pixels, const std::string& path) {
  const Dataset dataset = opened(path);
  std::vector<std::uint16_t> read(pixels.size());
  if (GDALRasterIO(GDALGetRasterBand(dataset.get(), 1), GF_Read, 0, 0, size, size, read.data(),
                   size, size, GDT_UInt16, 0, 0) != CE_None ||
      read != pixels) {
    throw std::runtime_error(path + ": wrong pixels");
  }
}

std::function<void(benchmark::State&)> timed(const std::function<void()>& work) {
  return [work](benchmark::State& state) {
    for (auto _ : state) work();
  };
}

}  // namespace

int main(int argc, char** argv) try {
  settle_memory_use();  // as the programs do
  GDALAllRegister();
  CPLSetConfigOption("GDAL_PAM_ENABLED", "NO");
  const ScratchFolder folder;
  const std::vector<std::uint16_t> pixels = speckle();
  const std::string plain = folder / "plain.tif";
  write(pixels, gridkit::create_geotiff, plain);

  const std::string cog = folder / "cog.tif";
  const std::string library_cog = folder / "library_cog.tif";
  CPLStringList cog_settings;
  cog_settings.SetNameValue("COMPRESS", "DEFLATE");
  cog_settings.SetNameValue("PREDICTOR", "YES");
  cog_settings.SetNameValue("OVERVIEW_RESAMPLING", "RMS");
  cog_settings.SetNameValue("NUM_THREADS", "ALL_CPUS");
  bench::Row cog_row;
  cog_row.work = "Cloud-Optimised GeoTIFF of 8192 x 8192 magnitudes, line by line";
  cog_row.yardstick = "GDAL's own writer with as many threads, from a GeoTIFF in the page cache";
  cog_row.goal = 1.1;
  cog_row.check = [&] {
    write(pixels, gridkit::create_cog, cog);
    check(pixels, cog);
  };
  cog_row.timed_work = timed([&] { write(pixels, gridkit::create_cog, cog); });
  cog_row.timed_yardstick = timed([&] { copy(plain, "COG", cog_settings, library_cog); });

  const std::string png = folder / "image.png";
  const std::string library_png = folder / "library.png";
  CPLStringList png_settings;
  png_settings.SetNameValue("ZLEVEL", "3");
  bench::Row png_row;
  png_row.work = "PNG of 8192 x 8192 magnitudes, line by line";
  png_row.yardstick = "libpng at level 3 on one thread, through GDAL from the same GeoTIFF";
  png_row.kind = bench::Row::Goal::speed_at_least;
  png_row.goal = 3;
  png_row.check = [&] {
    write(pixels, gridkit::create_png, png);
    check(pixels, png);
  };
  png_row.timed_work = timed([&] { write(pixels, gridkit::create_png, png); });
  png_row.timed_yardstick = timed([&] { copy(plain, "PNG", png_settings, library_png); });

  return bench::run(argc, argv, {cog_row, png_row});
} catch (const std::exception& error) {
  std::fprintf(stderr, "writers_bench: %s\n", error.what());
  return 1;
}
