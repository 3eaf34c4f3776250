#include "plugin/general_parameters.h"

#include <algorithm>

#include "gridkit/text.h"
#include "plugin/text_equality.h"

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
  const std::int64_t layers = std::int64_t{record->imageCount} * (is_cosar ? 2 : 1);
  record->layerCount =
      static_cast<std::int32_t>(std::clamp<std::int64_t>(layers, INT32_MIN, INT32_MAX));
  record->height = product.numberOfRows();
  record->width = product.numberOfColumns();
  // Complex and ground-range products have no such element, and the view would end the process.
  const bool is_mapped =
      record->productVariant != variant_ssc && record->productVariant != variant_mgd;
  record->mapProjectionName = is_mapped ? gks_Duplicate(product.mapProjection()) : nullptr;
  record->beta0->calibration_factor = product.calFactor();
}

std::int32_t tsx_DayOfYear(std::int32_t year, std::int32_t month, std::int32_t day) {
  constexpr std::int32_t lengths[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  const bool is_leap = year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
  std::int32_t result = is_leap && month > 2 ? 1 : 0;
  for (std::int32_t m = 1; m < month && m <= 12; ++m) result += lengths[m - 1];
  return result + day;
}
