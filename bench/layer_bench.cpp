#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <vector>

#include "bench/complex_product.h"
#include "bench/ratio.h"
#include "gridkit/layer.h"

// A whole layer into a GeoTIFF with the command-line tool, beside copying the image file. Both run
// as programs, with all that their start costs.

namespace {

using bench::ComplexProduct;
using bench::Kind;

constexpr std::int32_t image_size = 8192;
constexpr Kind kinds[] = {{"magnitude", "X_HH_MAGNITUDE_1", false},
                          {"phase", "X_HH_PHASE_2", true}};

std::string quoted(const std::string& text) {
  return "'" + text + "'";
}

void run(const std::string& command) {
  if (std::system(command.c_str()) != 0) throw std::runtime_error("failed: " + command);
}

// Blocks of the written raster against the plain reader's.
void check_raster(const ComplexProduct& product, const Kind& kind, const std::string& path) {
  constexpr std::int32_t size = 64;
  constexpr std::ptrdiff_t count = std::ptrdiff_t{size} * size;
  constexpr std::int32_t last = image_size / size - 1;
  gkl_PixelRect* rect =
      gkl_PixelRectCreate(size, size, kind.is_phase ? gkl_PixelS16 : gkl_PixelU16, nullptr);
  gkl_Layer* layer = gkl_LayerOpen(("1:" + path).c_str(), gki_GetInit(nullptr), nullptr, 0);
  bool is_right = rect != nullptr && layer != nullptr;
  for (const std::int32_t place : {0, 1, last / 2, last}) {
    if (!is_right) break;
    gke_Report* report = nullptr;
    gkl_LayerRead(layer, place * size, place * size, size, size, rect, &report);
    const auto* pixels = static_cast<const std::uint16_t*>(rect->data);
    is_right = report == nullptr && std::vector<std::uint16_t>(pixels, pixels + count) ==
                                        bench::plain_block(product, kind, size, place, place);
    gke_DeleteErrorReportEx(&report);
  }
  if (layer != nullptr) gkl_LayerClose(layer, nullptr);
  gkl_PixelRectDelete(rect, nullptr);
  if (!is_right) throw std::runtime_error(path + ": wrong pixels");
}

bench::Row row_of(const ComplexProduct& product, const Kind& kind) {
  const std::string raster = product.folder() / "layer.tif";
  const std::string copy = product.folder() / "copy.cos";
  const std::string read = std::string(GRIDKIT_TOOL) + " read --quiet --overwrite " +
                           quoted(product.annotation()) + ' ' + kind.layer + ' ' + quoted(raster);
  const std::string cp = "cp --reflink=never " + quoted(product.image()) + ' ' + quoted(copy);
  bench::Row row;
  row.work = std::string("gridkit read of a whole ") + kind.name + " layer to GeoTIFF";
  row.yardstick = "cp of the image file, 256 MiB";
  row.check = [=, &product] {
    run(read);
    check_raster(product, kind, raster);
  };
  row.timed_work = [=](benchmark::State& state) {
    for (auto _ : state) run(read);
  };
  row.timed_yardstick = [=](benchmark::State& state) {
    for (auto _ : state) run(cp);
  };
  return row;
}

}  // namespace

int main(int argc, char** argv) try {
  const ComplexProduct product(image_size, image_size, ComplexProduct::Content::noise);
  return bench::run(argc, argv, {row_of(product, kinds[0]), row_of(product, kinds[1])});
} catch (const std::exception& error) {
  std::fprintf(stderr, "layer_bench: %s\n", error.what());
  return 1;
}
