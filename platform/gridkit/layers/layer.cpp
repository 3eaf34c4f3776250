#include "gridkit/layer.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstdarg>
#include <cstring>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <string_view>

#include <gdal_priv.h>

#include "gridkit/layers/gdal_support.h"
#include "gridkit/layers/open_layer.h"
#include "gridkit/layers/widen.h"
#include "gridkit/os_error.h"
#include "gridkit/services/fail.h"
#include "gridkit/services/open_scope.h"
#include "gridkit/services/regular_file.h"

namespace {

using gridkit::Dataset;

struct ListDeleter {
  void operator()(gks_StringList* list) const { gks_StringListDelete(list, nullptr); }
};
using StringList = std::unique_ptr<gks_StringList, ListDeleter>;

// Why a path is not opened at all; empty when it may be tried.
std::string refusal_of(const char* path) {
  std::string refusal = gridkit::refusal_to_open(path);
  if (!refusal.empty() || gridkit::open_regular_file(path, false).is_open()) return refusal;
  const int reason = errno;
  return gridkit::shown_path(path) + ": " + gridkit::os_error_in_words(reason);
}

// The library takes some paths for more than a file's name, "/vsicurl/..." and "GTIFF_DIR:..."
// among them; led in by a dot none is.
std::string plain_path(std::string_view path) {
  if (path.starts_with("/vsi")) return "/." + std::string(path);
  return (path.starts_with('/') ? "" : "./") + std::string(path);
}

// Opens a GeoTIFF by itself: files that lie beside it have no say in its pixels nor
// in where they lie.
Dataset open_geotiff(const char* file) {
  gridkit::register_geotiff();
  const std::string path = plain_path(file);
  constexpr const char* drivers[] = {"GTiff", nullptr};
  constexpr const char* options[] = {"GEOREF_SOURCES=INTERNAL", nullptr};
  constexpr const char* siblings[] = {nullptr};
  return Dataset(
      GDALOpenEx(path.c_str(), GDAL_OF_RASTER | GDAL_OF_READONLY, drivers, options, siblings));
}

// What reading any pixel of a band brings into memory: a tile or strip, of all bands where their
// pixels stand side by side. Bytes; INT64_MAX where they are more.
std::int64_t piece_bytes(GDALDatasetH file, GDALRasterBandH band) {
  int tile_width = 0;
  int tile_height = 0;
  GDALGetBlockSize(band, &tile_width, &tile_height);
  const char* order = GDALGetMetadataItem(file, "INTERLEAVE", "IMAGE_STRUCTURE");
  const bool is_interleaved = order == nullptr || std::strcmp(order, "BAND") != 0;
  std::int64_t bytes = GDALGetDataTypeSizeBytes(GDALGetRasterDataType(band));
  for (const int factor :
       {tile_width, tile_height, is_interleaved ? GDALGetRasterCount(file) : 1}) {
    if (__builtin_mul_overflow(bytes, std::int64_t{factor}, &bytes)) return INT64_MAX;
  }
  return bytes;
}

constexpr std::int64_t most_piece_bytes = std::int64_t{1} << 30;

struct LayerName {
  int band;
  const char* path;
};

std::optional<LayerName> parse(const char* name) {
  const char* end = name + std::strlen(name);
  int band = 0;
  const auto number = std::from_chars(name, end, band);
  if (number.ec != std::errc() || number.ptr == end || *number.ptr != ':' || band < 1) {
    return std::nullopt;
  }
  return LayerName{band, number.ptr + 1};
}

std::optional<GDALDataType> gdal_type(int32_t pixelType) {
  switch (pixelType) {
    case gkl_PixelU8:
      return GDT_Byte;
    case gkl_PixelU16:
      return GDT_UInt16;
    case gkl_PixelS16:
      return GDT_Int16;
    case gkl_PixelF32:
      return GDT_Float32;
    case gkl_PixelF64:
      return GDT_Float64;
    default:
      return std::nullopt;
  }
}

// The part of [first, first + count) that lies in [0, size): its start, and how much there is.
struct Overlap {
  std::int64_t begin;
  std::int64_t count;
};
Overlap clip(std::int64_t first, std::int64_t count, std::int64_t size) {
  const std::int64_t begin = std::clamp<std::int64_t>(first, 0, size);
  const std::int64_t end = std::clamp<std::int64_t>(first + count, 0, size);
  return {begin, std::max<std::int64_t>(end - begin, 0)};
}

// A part of an image, and where its pixels go.
struct Part {
  int x, y, w, h;
  char* target;
};

// The part's pixels from the library's own tiles, which hold them in the file's type, to 64-bit
// floats: no copy of them stands between.
template <class Stored>
bool read_widened(GDALRasterBand& band, const Part& part, std::int64_t row_stride) {
  int tile_width = 0;
  int tile_height = 0;
  band.GetBlockSize(&tile_width, &tile_height);
  for (int y = part.y, next_y = 0; y < part.y + part.h; y = next_y) {
    const int tile_row = y / tile_height;
    next_y = y + std::min(tile_height - y % tile_height, part.y + part.h - y);
    for (int x = part.x, next_x = 0; x < part.x + part.w; x = next_x) {
      const int tile_column = x / tile_width;
      next_x = x + std::min(tile_width - x % tile_width, part.x + part.w - x);
      GDALRasterBlock* tile = band.GetLockedBlockRef(tile_column, tile_row);
      if (tile == nullptr) return false;
      const auto* from = static_cast<const Stored*>(tile->GetDataRef()) +
                         std::ptrdiff_t{y % tile_height} * tile_width + x % tile_width;
      char* to = part.target + row_stride * (y - part.y) + std::ptrdiff_t{8} * (x - part.x);
      for (int line = y; line < next_y; ++line, from += tile_width, to += row_stride) {
        gridkit::widen(from, reinterpret_cast<double*>(to), static_cast<std::size_t>(next_x - x));
      }
      tile->DropLock();
    }
  }
  return true;
}

bool read(GDALRasterBandH handle, const Part& part, const gkl_PixelRect& rect, GDALDataType type) {
  constexpr std::int64_t size = sizeof(double);
  const bool is_plain = rect.columnStride == size && rect.rowStride % size == 0 &&
                        reinterpret_cast<std::uintptr_t>(rect.data) % alignof(double) == 0;
  if (type == GDT_Float64 && is_plain) {
    GDALRasterBand& band = *GDALRasterBand::FromHandle(handle);
    switch (band.GetRasterDataType()) {
      case GDT_Byte:
        return read_widened<std::uint8_t>(band, part, rect.rowStride);
      case GDT_UInt16:
        return read_widened<std::uint16_t>(band, part, rect.rowStride);
      case GDT_Int16:
        return read_widened<std::int16_t>(band, part, rect.rowStride);
      default:
        break;
    }
  }
  return GDALRasterIOEx(handle, GF_Read, part.x, part.y, part.w, part.h, part.target, part.w,
                        part.h, type, rect.columnStride, rect.rowStride, nullptr) == CE_None;
}

// Zeros for a window that reaches past the image.
void clear(const gkl_PixelRect& rect, int32_t width, int32_t height) {
  for (int32_t line = 0; line < height; ++line) {
    std::memset(static_cast<char*>(rect.data) + rect.rowStride * line, 0,
                static_cast<std::size_t>(rect.columnStride * width));
  }
}

}  // namespace

gks_StringList* gkl_LayerGetNames(const char* path, gki_Instance* token, gke_Report** err) try {
  constexpr const char* word = "gkl_LayerGetNames";
  if (path == nullptr || token != gki_GetInit(nullptr)) {
    gridkit::fail(err, word, {"no path or no token of this toolkit"});
    return nullptr;
  }
  if (const std::string refusal = refusal_of(path); !refusal.empty()) {
    gridkit::fail(err, word, {refusal});
    return nullptr;
  }
  const gridkit::GdalMessages messages;
  const Dataset file = open_geotiff(path);
  if (file == nullptr) {
    gridkit::fail(err, word, {path, ": ", messages.first_or("not a GeoTIFF file")});
    return nullptr;
  }
  StringList names;
  const int bands = GDALGetRasterCount(file.get());
  for (int band = 1; band <= bands; ++band) {
    const std::string name = std::to_string(band) + ':' + path;
    gke_Report* failed = nullptr;
    gks_StringList* const longer = gks_StringListAppend(names.get(), name.c_str(), &failed);
    static_cast<void>(names.release());
    names.reset(longer);
    if (failed == nullptr) continue;
    if (err != nullptr) *err = failed;
    if (err == nullptr) gke_DeleteErrorReportEx(&failed);
    return nullptr;
  }
  if (names == nullptr) gridkit::fail(err, word, {path, ": the file holds no image"});
  return names.release();
} catch (const std::bad_alloc&) {
  gridkit::fail(err, "gkl_LayerGetNames", {"out of memory"});
  return nullptr;
}

gkl_Layer* gkl_LayerOpen(const char* name, gki_Instance* token, gke_Report** err, ...) try {
  constexpr const char* word = "gkl_LayerOpen";
  std::va_list options;
  va_start(options, err);
  bool known = true;
  for (int option = va_arg(options, int); option != 0; option = va_arg(options, int)) {
    known = known && option == gkl_OptionReadOnly;
  }
  va_end(options);
  const auto parsed = name == nullptr ? std::nullopt : parse(name);
  if (!parsed || !known || token != gki_GetInit(nullptr)) {
    gridkit::fail(err, word, {"no layer name, an unknown option or no token of this toolkit"});
    return nullptr;
  }
  if (const std::string refusal = refusal_of(parsed->path); !refusal.empty()) {
    gridkit::fail(err, word, {refusal});
    return nullptr;
  }
  const gridkit::GdalMessages messages;
  Dataset file = open_geotiff(parsed->path);
  GDALRasterBandH band = file == nullptr || parsed->band > GDALGetRasterCount(file.get())
                             ? nullptr
                             : GDALGetRasterBand(file.get(), parsed->band);
  if (band == nullptr) {
    gridkit::fail(err, word, {parsed->path, ": ", messages.first_or("no such layer")});
    return nullptr;
  }
  if (piece_bytes(file.get(), band) > most_piece_bytes) {
    gridkit::fail(
        err, word,
        {parsed->path, ": a tile or strip of it takes more than 1 GiB in memory; store the ",
         "image in smaller ones"});
    return nullptr;
  }
  return new gkl_Layer{std::move(file), band, GDALGetRasterBandXSize(band),
                       GDALGetRasterBandYSize(band)};
} catch (const std::bad_alloc&) {
  gridkit::fail(err, "gkl_LayerOpen", {"out of memory"});
  return nullptr;
}

void gkl_LayerClose(gkl_Layer* layer, gke_Report** err) {
  if (layer == nullptr) {
    gridkit::fail(err, "gkl_LayerClose", {"no layer"});
    return;
  }
  const gridkit::GdalMessages messages;
  delete layer;
}

void gkl_LayerRead(gkl_Layer* layer, int32_t firstColumn, int32_t firstLine, int32_t width,
                   int32_t height, gkl_PixelRect* rect, gke_Report** err) try {
  constexpr const char* word = "gkl_LayerRead";
  if (layer == nullptr || rect == nullptr) {
    gridkit::fail(err, word, {layer == nullptr ? "no layer" : "no rectangle"});
    return;
  }
  const auto type = gdal_type(rect->pixelType);
  if (width < 1 || height < 1 || width > rect->width || height > rect->height || !type) {
    gridkit::fail(err, word, {"the window does not fit the rectangle"});
    return;
  }
  const Overlap columns = clip(firstColumn, width, layer->width);
  const Overlap lines = clip(firstLine, height, layer->height);
  if (columns.count < width || lines.count < height) clear(*rect, width, height);
  if (columns.count == 0 || lines.count == 0) return;

  const Part part{static_cast<int>(columns.begin), static_cast<int>(lines.begin),
                  static_cast<int>(columns.count), static_cast<int>(lines.count),
                  static_cast<char*>(rect->data) + rect->rowStride * (lines.begin - firstLine) +
                      rect->columnStride * (columns.begin - firstColumn)};
  const gridkit::GdalMessages messages;
  if (!read(layer->band, part, *rect, *type)) {
    gridkit::fail(err, word, {messages.first_or("the image cannot be read")});
  }
} catch (const std::bad_alloc&) {
  gridkit::fail(err, "gkl_LayerRead", {"out of memory"});
}

void gkl_LayerSize(const gkl_Layer* layer, int32_t* width, int32_t* height) {
  *width = layer == nullptr ? 0 : layer->width;
  *height = layer == nullptr ? 0 : layer->height;
}
