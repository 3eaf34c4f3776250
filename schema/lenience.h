#pragma once

#include <algorithm>
#include <array>
#include <string_view>

#include "lmx/diagnostic.h"

namespace level1bProduct {

// What pixels, their places, times and brightness are made of. Below these elements nothing is
// passed over.
inline constexpr std::array<std::string_view, 14> needed_elements = {
    "/level1Product/noise",
    "/level1Product/productComponents/annotation",
    "/level1Product/productComponents/imageData",
    "/level1Product/productInfo/acquisitionInfo/lookDirection",
    "/level1Product/productInfo/imageDataInfo",
    "/level1Product/productInfo/productVariantInfo",
    "/level1Product/productInfo/sceneInfo",
    "/level1Product/productSpecific",
    "/level1Product/platform/orbit/orbitHeader/firstStateTime",
    "/level1Product/platform/orbit/orbitHeader/numStateVectors",
    "/level1Product/platform/orbit/orbitHeader/stateVectorTimeSpacing",
    "/level1Product/platform/orbit/stateVec",
    "/level1Product/calibration/calibrationConstant",
    "/level1Product/instrument",
};

// Whether a lenient read may go on past a fault of an annotation: a text that stands where it
// should and was read as it is, but is not what the schema allows there, or an attribute that the
// schema does not know; and in both cases nothing that is needed. What is missing, out of place or
// no value of its type at all is never passed over.
inline bool may_be_passed_over(const lmx::Diagnostic& fault) {
  switch (fault.code) {
    case lmx::error_not_in_enumeration:
    case lmx::error_too_long:
    case lmx::error_above_upper_bound:
    case lmx::error_below_lower_bound:
    case lmx::error_unknown_attribute:
      break;
    default:
      return false;
  }
  const std::string_view path = fault.path;
  return std::none_of(needed_elements.begin(), needed_elements.end(), [&](std::string_view needed) {
    return path.starts_with(needed) && (path.size() == needed.size() || path[needed.size()] == '/');
  });
}

}  // namespace level1bProduct
