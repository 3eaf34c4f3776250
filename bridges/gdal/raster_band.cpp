#include "bridges/gdal/raster_band.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <utility>

namespace gridkit_gdal {

namespace {

constexpr int64_t block_bytes = 2L * 1024 * 1024;  // about so many

// Hands the host's progress on to GDAL's.
int32_t tell_progress(void* context, int64_t done, int64_t all) {
  const auto* extra = static_cast<const GDALRasterIOExtraArg*>(context);
  const double part = static_cast<double>(done) / static_cast<double>(all);
  return extra->pfnProgress(part, "", extra->pProgressData) != FALSE ? 0 : 1;
}

// Whether the floating-point window that a caller may have given says something else.
bool is_plain(const GDALRasterIOExtraArg* extra, int x, int y, int width, int height) {
  if (extra == nullptr) return true;
  if (extra->bFloatingPointWindowValidity == FALSE) return true;
  return extra->dfXOff == x && extra->dfYOff == y && extra->dfXSize == width &&
         extra->dfYSize == height;
}

bool is_thinned(const GDALRasterIOExtraArg* extra) {
  return extra == nullptr || extra->eResampleAlg == GRIORA_NearestNeighbour;
}

}  // namespace

RasterBand::RasterBand(GDALDataset* dataset, RasterSource source, bool has_no_data)
    : source_(std::move(source)), has_no_data_(has_no_data) {
  poDS = dataset;
  nBand = 1;
  nRasterXSize = static_cast<int>(source_.samples);
  nRasterYSize = static_cast<int>(source_.lines);
  eDataType = source_.type;
  nBlockXSize = nRasterXSize;
  const int64_t line_bytes = source_.samples * GDALGetDataTypeSizeBytes(eDataType);
  nBlockYSize = static_cast<int>(std::clamp<int64_t>(block_bytes / line_bytes, 1, source_.lines));
  const std::string_view word = word_of(source_.quantity);
  std::string description = source_.name;
  if (!word.empty()) description.append(" ").append(word);
  GDALMajorObject::SetDescription(description.c_str());
}

CPLErr RasterBand::read(const gridkit_window& window, const gridkit_target& target, int32_t form,
                        const GDALRasterIOExtraArg* extra) const {
  gridkit_read_options options = read_options_of(source_);
  options.form = form;
  if (extra != nullptr && extra->pfnProgress != nullptr) {
    options.progress = tell_progress;
    options.context = const_cast<GDALRasterIOExtraArg*>(extra);
  }
  HostError error;
  const auto* product = source_.product.get();
  const int32_t code = source_.is_layer
                           ? gridkit_read_layer(product, source_.number, &window, &target, &options,
                                                nullptr, error.out())
                           : gridkit_read_samples(product, source_.number, &window, &target,
                                                  &options, nullptr, error.out());
  if (code == gridkit_Done) return CE_None;
  error.report();
  return CE_Failure;
}

CPLErr RasterBand::IReadBlock(int /*column*/, int row, void* data) {
  gridkit_window window = sized<gridkit_window>();
  window.line = static_cast<int64_t>(row) * nBlockYSize;
  window.lines = std::min<int64_t>(nBlockYSize, nRasterYSize - window.line);
  window.samples = nRasterXSize;
  gridkit_target target = sized<gridkit_target>();
  target.data = data;
  return read(window, target, source_.form, nullptr);
}

CPLErr RasterBand::IRasterIO(GDALRWFlag flag, int x, int y, int width, int height, void* data,
                             int buffer_width, int buffer_height, GDALDataType buffer_type,
                             GSpacing pixel_space, GSpacing line_space,
                             GDALRasterIOExtraArg* extra) {
  const bool is_widened = source_.type == GDT_CInt16 && buffer_type == GDT_CFloat32;
  const bool has_form = buffer_type == eDataType || is_widened;
  const bool has_steps = width % buffer_width == 0 && height % buffer_height == 0;
  const bool is_whole = width == buffer_width && height == buffer_height;
  if (flag != GF_Read || !has_form || !has_steps || !(is_whole || is_thinned(extra)) ||
      !is_plain(extra, x, y, width, height)) {
    return GDALRasterBand::IRasterIO(flag, x, y, width, height, data, buffer_width, buffer_height,
                                     buffer_type, pixel_space, line_space, extra);
  }
  gridkit_window window = sized<gridkit_window>();
  window.line_step = height / buffer_height;
  window.sample_step = width / buffer_width;
  // The nearest neighbour of a pixel of the buffer, as GDAL sees it, is that at its centre.
  window.line = y + window.line_step / 2;
  window.sample = x + window.sample_step / 2;
  window.lines = buffer_height;
  window.samples = buffer_width;
  gridkit_target target = sized<gridkit_target>();
  target.data = data;
  target.line_stride = line_space;
  target.sample_stride = pixel_space;
  return read(window, target, is_widened ? gridkit_ComplexFloat : source_.form, extra);
}

double RasterBand::GetNoDataValue(int* has_one) {
  if (has_one != nullptr) *has_one = has_no_data_ ? TRUE : FALSE;
  return 0;
}

const char* RasterBand::GetUnitType() {
  return source_.quantity == Quantity::phase ? "1/65536 turn" : "";
}

}  // namespace gridkit_gdal
