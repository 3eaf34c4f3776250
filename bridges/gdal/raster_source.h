#pragma once

#include <gdal.h>

#include <optional>
#include <string>
#include <vector>

#include "bridges/gdal/connection.h"
#include "bridges/gdal/host.h"

namespace gridkit_gdal {

// What a dataset's only band shows: an image of a product, something that is made of it, or a
// layer. Texts are copies.
struct RasterSource {
  Product product;
  bool is_layer = false;
  int32_t number = 0;  // of the image or the layer
  Quantity quantity = Quantity::samples;
  int64_t lines = 0;
  int64_t samples = 0;
  GDALDataType type = GDT_Unknown;
  int32_t form = gridkit_Native;             // of an image
  bool is_complex = false;                   // samples are complex numbers
  bool is_placed = false;                    // its lines and samples are those of the geometry
  int32_t subtract_noise = gridkit_Default;  // gridkit_Choice
  std::string name;                          // of the image or the layer
  std::string polarisation;                  // of an image, else empty
  std::string first_line_utc;                // of an image where it is known, else empty
  double calibration_factor = 0;             // of an image where one is told, else 0
};

// Images and layers of a product. An image that cannot be told of is left out, with the failure
// reported. Products of formats without images have none.
std::vector<RasterSource> images_of(const Product& product);
std::vector<RasterSource> layers_of(const Product& product);

// What an image gives of a quantity; nothing where its samples have no such form, or are that
// quantity themselves.
std::optional<RasterSource> made_of(const RasterSource& image, Quantity quantity);

// How the host reads it: form, quantity and noise.
gridkit_read_options read_options_of(const RasterSource& source);

// Whether the product calibrates what the source shows, by a read of its first sample; if not, the
// error tells why. That a file is cut or missing is not the question here.
bool is_given(const RasterSource& source, HostError& error);

// The source of a connection whose part is not empty, or of the product's only image or layer.
// Nothing where there is none of the name, which is then reported.
std::optional<RasterSource> source_of(const Product& product, const Connection& connection,
                                      int32_t subtract_noise);

}  // namespace gridkit_gdal
