// All blocks of a detected layer, of tiled and of striped GeoTIFF files, beside the library below
// reading the same windows as 16-bit numbers.

#include <cpl_string.h>
#include <gdal.h>
#include <gdal_frmts.h>

#include <deque>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "bench/ratio.h"
#include "gridkit/instance.h"
#include "record/exports.h"
#include "record/tsx_file.h"
#include "tests/support/scratch_folder.h"
#include "tools/command_line/memory_use.h"

namespace {

constexpr int size = 4096;

struct Closer {
  void operator()(void* dataset) const { GDALClose(dataset); }
};
using Dataset = std::unique_ptr<void, Closer>;

// An image whose pixels differ, read by the plug-in or by the library itself. Each sweep opens it
// anew, as a program does that reads an image once: the library keeps what it read.
class Image {
 public:
  Image(const std::string& path, int block, bool is_tiled) : path_(path), block_(block) {
    write(path, is_tiled);
    file_.productVariant = variant_mgd;
    file_.width = file_.height = size;
    file_.blockWidth = file_.blockHeight = block;
  }
  Image(const Image&) = delete;
  Image& operator=(const Image&) = delete;
  ~Image() { close(); }

  void open_layer() {
    close();
    file_.tiffLayers[0] =
        gkl_LayerOpen(("1:" + path_).c_str(), gki_GetInit(nullptr), nullptr, gkl_OptionReadOnly, 0);
    if (file_.tiffLayers[0] == nullptr) throw std::runtime_error(path_ + ": cannot be opened");
  }
  void open_dataset() {
    close();
    dataset_.reset(GDALOpen(path_.c_str(), GA_ReadOnly));
    if (dataset_ == nullptr) throw std::runtime_error(path_ + ": cannot be opened");
  }
  void close() {
    dataset_.reset();
    if (file_.tiffLayers[0] != nullptr) gkl_LayerClose(file_.tiffLayers[0], nullptr);
    file_.tiffLayers[0] = nullptr;
  }

  int blocks() const { return size / block_; }
  void read_block(int row, int column, std::vector<std::uint16_t>& pixels) {
    TsxLayer layer{&file_, 0};
    void* target = pixels.data();
    if (tsxLayerRasterRead(&layer, row, column, &target) != 0) throw std::runtime_error("no block");
  }
  void read_window(int row, int column, std::vector<std::uint16_t>& pixels) {
    if (GDALRasterIO(GDALGetRasterBand(dataset_.get(), 1), GF_Read, column * block_, row * block_,
                     block_, block_, pixels.data(), block_, block_, GDT_UInt16, 0, 0) != CE_None) {
      throw std::runtime_error("no window");
    }
  }
  std::vector<std::uint16_t> pixels() const {
    return std::vector<std::uint16_t>(static_cast<std::size_t>(block_) *
                                      static_cast<std::size_t>(block_));
  }

 private:
  static void write(const std::string& path, bool is_tiled) {
    CPLStringList settings;
    settings.SetNameValue("TILED", is_tiled ? "YES" : "NO");
    const Dataset dataset(GDALCreate(GDALGetDriverByName("GTiff"), path.c_str(), size, size, 1,
                                     GDT_UInt16, settings.List()));
    if (dataset == nullptr) throw std::runtime_error(path + ": cannot be created");
    std::vector<std::uint16_t> line(size);
    for (int y = 0; y < size; ++y) {
      for (int x = 0; x < size; ++x) {
        line[static_cast<std::size_t>(x)] = static_cast<std::uint16_t>(y * 4001 + x * 17);
      }
      if (GDALRasterIO(GDALGetRasterBand(dataset.get(), 1), GF_Write, 0, y, size, 1, line.data(),
                       size, 1, GDT_UInt16, 0, 0) != CE_None) {
        throw std::runtime_error(path + ": cannot be written");
      }
    }
  }

  std::string path_;
  int block_;
  TsxFile file_{};
  Dataset dataset_;
};

struct Way {
  void (Image::*open)();
  void (Image::*read)(int, int, std::vector<std::uint16_t>&);
};
constexpr Way plugin = {&Image::open_layer, &Image::read_block};
constexpr Way library = {&Image::open_dataset, &Image::read_window};

template <class Use>
void sweep(Image& image, Way way, Use use) {
  auto pixels = image.pixels();
  (image.*way.open)();
  for (int row = 0; row < image.blocks(); ++row) {
    for (int column = 0; column < image.blocks(); ++column) {
      (image.*way.read)(row, column, pixels);
      use(pixels);
    }
  }
  image.close();
}

std::function<void(benchmark::State&)> timed(Image& image, Way way) {
  return [&image, way](benchmark::State& state) {
    for (auto _ : state) sweep(image, way, [](auto&) { benchmark::ClobberMemory(); });
  };
}

bench::Row row(const std::string& kind, Image& image) {
  bench::Row row;
  row.work = "detected layer, " + kind;
  row.yardstick = "the GeoTIFF library reading the same windows as 16 bits";
  row.kind = bench::Row::Goal::time_at_most;
  row.goal = 1.2;
  row.check = [kind, &image] {
    std::vector<std::vector<std::uint16_t>> windows;
    sweep(image, library, [&](auto& pixels) { windows.push_back(pixels); });
    auto window = windows.begin();
    sweep(image, plugin, [&](auto& pixels) {
      if (pixels != *window++) throw std::runtime_error(kind + ": pixels differ");
    });
  };
  row.timed_work = timed(image, plugin);
  row.timed_yardstick = timed(image, library);
  return row;
}

}  // namespace

int main(int argc, char** argv) try {
  settle_memory_use();  // as the programs do
  GDALRegister_GTiff();
  const ScratchFolder folder;
  std::deque<Image> images;
  std::vector<bench::Row> rows;
  for (const bool is_tiled : {true, false}) {
    for (const int block : {64, 256, 1024}) {
      const std::string kind = std::string(is_tiled ? "tiled" : "striped") + ", blocks of " +
                               std::to_string(block) + " x " + std::to_string(block);
      const auto path = folder.path() / (std::to_string(rows.size()) + ".tif");
      rows.push_back(row(kind, images.emplace_back(path.string(), block, is_tiled)));
    }
  }
  return bench::run(argc, argv, rows);
} catch (const std::exception& error) {
  std::fprintf(stderr, "bench: %s\n", error.what());
  return 1;
}
