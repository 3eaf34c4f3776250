#include "plugin/general_parameters.h"

#include <algorithm>

#include "gridkit/text.h"
#include "record/text_equality.h"

namespace {

std::int32_t variant_of(const char* text) {
  constexpr const char* variants[] = {"SSC", "MGD", "GEC", "EEC"};
  for (std::int32_t number = 0; number < 4; ++number) {
    if (tsx_TextEqual(text, variants[number])) return number;
  }
  return variant_unknown;
}

}  // namespace

void tsx_ReadGeneralParms(TsxFile* record) {
  level1bProductBase& product = *record->product;
  record->productVariant = variant_of(product.productVariant());
  // Two layers an image depend on the format alone, complex files or detected ones on the variant.
  const bool is_cosar = tsx_TextEqual(product.imageDataFormat(), "COSAR");
  record->imageCount = product.numberOfLayers();
  const std::int64_t layers =
      std::int64_t{record->imageCount} * (is_cosar ? layers_of_complex_image : 1);
  record->layerCount =
      static_cast<std::int32_t>(std::clamp<std::int64_t>(layers, INT32_MIN, INT32_MAX));
  record->height = product.numberOfRows();
  record->width = product.numberOfColumns();
  // Complex and ground-range products have no such element, and the view would end the process.
  const bool is_mapped =
      record->productVariant != variant_ssc && record->productVariant != variant_mgd;
  // Kept on purpose: the copy is not freed with the record.
  record->mapProjectionName = is_mapped ? gks_Duplicate(product.mapProjection()) : nullptr;
  record->beta0->calibration_factor = product.calFactor();
}
