#pragma once

#include <cstddef>
#include <string>

// The path of the element without which the open of a valid annotation would end the process, null
// where there is none: lists may be empty and still valid, and some elements belong to some
// variants only, but the view's accessors of these texts take their presence for granted. `Product`
// is the class of level1Product of any schema.
template <class Product>
const char* missing_required_text(const Product& product) {
  const auto& variants = product.get_productInfo().get_productVariantInfo();
  if (variants.size_productVariant() == 0) {
    return "/level1Product/productInfo/productVariantInfo/productVariant";
  }
  const std::string variant = variants.get_productVariant(0);
  const bool is_ground_range = variant == "MGD";
  if (variant != "SSC" && !is_ground_range) {
    return variants.size_mapProjection() > 0
               ? nullptr
               : "/level1Product/productInfo/productVariantInfo/mapProjection";
  }
  if (variants.size_projection() == 0) {
    return "/level1Product/productInfo/productVariantInfo/projection";
  }
  const auto& specific = product.get_productSpecific();
  const bool has_start = specific.size_complexImageInfo() > 0 &&
                         specific.get_complexImageInfo(0).size_quicklookDataStartWith() > 0;
  return !is_ground_range || has_start
             ? nullptr
             : "/level1Product/productSpecific/complexImageInfo/quicklookDataStartWith";
}
