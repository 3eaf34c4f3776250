#pragma once

#include <cstddef>
#include <cstdint>

#include "binding/level1bProductBase.h"
#include "gridkit/file.h"
#include "gridkit/layer.h"
#include "gridkit/string_list.h"
#include "rmdllib/radar_generic_model.h"

// Variants of a product; every decision that depends on the variant tests these.
enum ProductVariant : std::int32_t {
  variant_unknown = -1,  // a text outside the four
  variant_ssc = 0,       // complex, slant range
  variant_mgd = 1,       // detected, ground range
  variant_gec = 2,       // detected, geocoded on the ellipsoid
  variant_eec = 3        // detected, geocoded with terrain
};

// Layers of an image file in the complex format: its magnitude, then its phase.
inline constexpr std::int32_t layers_of_complex_image = 2;

// The most image files that a product may have.
inline constexpr std::int32_t most_images = 4;

// The calibration record: the factor from squared digital numbers to radar brightness.
struct TsxBeta0 {
  double calibration_factor;
};

// The record of one open product: what every tsxFile and tsxLayer function works from. It is
// cleared at construction, so every field has a defined value from the start; see
// plugin/product_record.h for its life.
struct TsxFile {
  char* fileName;                       // path as the host gave it, and the key in the registry
  gkf_File* xmlFile;                    // the annotation, held open for the record's life
  gkf_Stream* cosarFiles[most_images];  // by image, complex products
  gkl_Layer* tiffLayers[most_images];   // by image, detected products
  std::int32_t productVariant;          // ProductVariant
  RadarGenericModel* sarModel;          // owned
  TsxBeta0* beta0;                      // owned
  std::int32_t layerCount;              // layers offered to the host
  gks_StringList* layerNames;           // grows with each listing, nothing reads it
  std::int32_t height;                  // lines
  std::int32_t width;                   // samples per line
  std::int32_t imageCount;              // image files
  gks_StringList* auxLayerNames;        // kept empty
  level1bProductBase* product;          // the annotation, owned
  char* mapProjectionName;              // geocoded products, else null
  std::int32_t blockWidth;              // pixels per block, set by each layer open
  std::int32_t blockHeight;
};

// The handle of an image, null for an index outside the arrays: such an image counts as never
// opened, and the host's operations answer a null handle with a failure.
inline gkf_Stream* cosar_file(const TsxFile& file, std::int32_t image) {
  return image >= 0 && image < most_images ? file.cosarFiles[image] : nullptr;
}
inline gkl_Layer* tiff_layer(const TsxFile& file, std::int32_t image) {
  return image >= 0 && image < most_images ? file.tiffLayers[image] : nullptr;
}

// What a layer's index says: of a complex product each image has two layers, its magnitude and then
// its phase; of any other product an image is a layer.
inline std::int32_t image_of_layer(const TsxFile& file, std::int32_t index) {
  return file.productVariant == variant_ssc ? index / layers_of_complex_image : index;
}
inline bool is_phase(const TsxFile& file, std::int32_t index) {
  return file.productVariant == variant_ssc && index % layers_of_complex_image != 0;
}

// The handle of one layer. It owns nothing and must not outlive its product.
struct TsxLayer {
  TsxFile* file;
  std::int32_t layerIndex;  // from 0: the number at the end of the layer's name, less one
};
