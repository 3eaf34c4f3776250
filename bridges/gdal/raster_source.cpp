#include "bridges/gdal/raster_source.h"

#include <cpl_error.h>

#include <algorithm>
#include <string_view>

namespace gridkit_gdal {

namespace {

// Pixels as they are in their file; half-precision numbers as floats, as GDAL has none.
void take_native_form(RasterSource& source, int32_t sample_type) {
  source.is_complex = sample_type != gridkit_Uint16;
  switch (sample_type) {
    case gridkit_ComplexInt16:
      source.type = GDT_CInt16;
      break;
    case gridkit_ComplexHalf:
      source.type = GDT_CFloat32;
      source.form = gridkit_ComplexFloat;
      break;
    default:
      source.type = GDT_UInt16;
  }
}

int32_t host_quantity(Quantity quantity) {
  switch (quantity) {
    case Quantity::beta0:
      return gridkit_Beta0;
    case Quantity::sigma0:
      return gridkit_Sigma0;
    case Quantity::gamma0:
      return gridkit_Gamma0;
    default:
      return gridkit_Intensity;
  }
}

std::string names_of(const std::vector<RasterSource>& sources) {
  std::string names;
  for (const RasterSource& source : sources) names += ' ' + source.name;
  return names;
}

}  // namespace

std::vector<RasterSource> images_of(const Product& product) {
  int32_t count = 0;
  HostError error;
  if (gridkit_image_count(product.get(), &count, error.out()) != gridkit_Done) {
    if (error.code() != gridkit_NotThere) error.report();
    return {};
  }
  std::vector<RasterSource> sources;
  for (int32_t i = 0; i < count; ++i) {
    gridkit_image image = sized<gridkit_image>();
    if (gridkit_get_image(product.get(), i, &image, error.out()) != gridkit_Done) {
      error.report();
      continue;
    }
    RasterSource source;
    source.product = product;
    source.number = i;
    source.lines = image.lines;
    source.samples = image.samples;
    source.is_placed = image.magnitude_layer >= 0;
    source.name = image.name;
    source.polarisation = image.polarisation;
    source.first_line_utc = image.first_line_utc;
    source.calibration_factor = image.calibration_factor;
    take_native_form(source, image.sample_type);
    sources.push_back(source);
  }
  return sources;
}

std::vector<RasterSource> layers_of(const Product& product) {
  int32_t count = 0;
  HostError error;
  if (gridkit_layer_count(product.get(), &count, error.out()) != gridkit_Done) {
    error.report();
    return {};
  }
  std::vector<RasterSource> sources;
  for (int32_t i = 0; i < count; ++i) {
    gridkit_layer layer = sized<gridkit_layer>();
    if (gridkit_get_layer(product.get(), i, &layer, error.out()) != gridkit_Done) {
      error.report();
      continue;
    }
    RasterSource source;
    source.product = product;
    source.is_layer = true;
    source.number = i;
    source.lines = layer.height;
    source.samples = layer.width;
    source.is_placed = true;
    source.type = std::string_view(layer.pixel_type) == "s16" ? GDT_Int16 : GDT_UInt16;
    source.name = layer.name;
    sources.push_back(source);
  }
  return sources;
}

std::optional<RasterSource> made_of(const RasterSource& image, Quantity quantity) {
  RasterSource source = image;
  source.quantity = quantity;
  switch (quantity) {
    case Quantity::samples:
      return source;
    case Quantity::amplitude:
      source.type = GDT_UInt16;
      source.form = image.is_complex ? gridkit_Magnitude16 : gridkit_Native;
      return source;
    case Quantity::phase:
      if (!image.is_complex) return std::nullopt;
      source.type = GDT_Int16;
      source.form = gridkit_Phase16;
      return source;
    default:
      source.type = GDT_Float32;
      source.form = gridkit_Power;
      return source;
  }
}

gridkit_read_options read_options_of(const RasterSource& source) {
  gridkit_read_options options = sized<gridkit_read_options>();
  options.form = source.form;
  options.quantity = host_quantity(source.quantity);
  options.subtract_noise = source.subtract_noise;
  return options;
}

bool is_given(const RasterSource& source, HostError& error) {
  if (source.form != gridkit_Power) return true;
  gridkit_window window = sized<gridkit_window>();
  window.lines = window.samples = 1;
  float value = 0;
  gridkit_target target = sized<gridkit_target>();
  target.data = &value;
  const gridkit_read_options options = read_options_of(source);
  gridkit_read_samples(source.product.get(), source.number, &window, &target, &options, nullptr,
                       error.out());
  return error.code() != gridkit_NotThere && error.code() != gridkit_WrongUse;
}

std::optional<RasterSource> source_of(const Product& product, const Connection& connection,
                                      int32_t subtract_noise) {
  const auto images = images_of(product);
  const auto layers = layers_of(product);
  const auto named = [&](const RasterSource& source) { return source.name == connection.part; };
  auto found = std::find_if(images.begin(), images.end(), named);
  if (connection.part.empty()) found = images.begin();
  if (found != images.end()) {
    RasterSource image = *found;
    image.subtract_noise = subtract_noise;
    auto source = made_of(image, connection.quantity);
    if (!source) {
      CPLError(CE_Failure, CPLE_NotSupported, "%s: %s is detected and has no phase",
               connection.path.c_str(), image.name.c_str());
      return std::nullopt;
    }
    HostError error;
    if (is_given(*source, error)) return source;
    error.report();
    return std::nullopt;
  }
  const auto layer = std::find_if(layers.begin(), layers.end(), named);
  if (layer == layers.end() && !connection.part.empty()) {
    CPLError(CE_Failure, CPLE_OpenFailed, "%s: no image or layer is called %s; there are%s%s",
             connection.path.c_str(), connection.part.c_str(), names_of(images).c_str(),
             names_of(layers).c_str());
    return std::nullopt;
  }
  if (connection.quantity != Quantity::samples) {
    CPLError(CE_Failure, CPLE_NotSupported, "%s: %s is a layer; quantities are made of images:%s",
             connection.path.c_str(), connection.part.c_str(), names_of(images).c_str());
    return std::nullopt;
  }
  if (connection.part.empty()) return layers.empty() ? std::nullopt : std::optional(layers.front());
  return *layer;
}

}  // namespace gridkit_gdal
