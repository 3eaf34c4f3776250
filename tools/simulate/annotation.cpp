#include "tools/simulate/annotation.h"

#include <sstream>
#include <stdexcept>

#include "plugin/schema_version.h"
#include "tools/annotation/annotation_file.h"
#include "tools/annotation/product_writer.h"
#include "tools/simulate/annotation_calibration.h"
#include "tools/simulate/annotation_header.h"
#include "tools/simulate/annotation_info.h"
#include "tools/simulate/annotation_layout.h"
#include "tools/simulate/annotation_platform.h"
#include "tools/simulate/annotation_processing.h"
#include "tools/simulate/annotation_quality.h"
#include "tools/simulate/annotation_setup.h"
#include "tools/simulate/annotation_specific.h"

namespace simulate {

namespace {

template <class Product>
void fill_product(const AnnotationSource& source, Product& product) {
  fill_general_header(source, product.get_generalHeader());
  fill_product_components(source, product.get_productComponents());
  fill_product_info(source, product.get_productInfo());
  fill_product_specific(source, product.get_productSpecific());
  fill_setup(source, product.get_setup());
  fill_processing(source, product.get_processing());
  fill_instrument(source, product.get_instrument());
  fill_calibration(source, product.get_calibration());
  for (std::size_t i = 0; i < source.options().polarisations.size(); ++i) {
    product.append_noise();
    fill_noise(source, i, product.back_noise());
  }
  fill_platform(source, product.get_platform());
  fill_product_quality(source, product.get_productQuality());
}

}  // namespace

std::string schema_for(const std::string& version_text) {
  std::string schema;
  for (int i = 0; i < schema_text_none; ++i) {
    if (version_text.find(schema_version_texts[i]) != std::string::npos) {
      schema = schema_of_text[i];
    }
  }
  return schema;
}

void write_annotation(const AnnotationSource& source, std::ostream& out) {
  const auto error = with_root(schema_for(source.options().version_text), [&](auto& root) {
    auto& product = root.get_level1Product();
    fill_product(source, product);
    // The extreme profiles stay as the classes write them, which tools can compare byte by byte.
    if (source.options().profile != Profile::typical) return write_product(product, out);
    std::ostringstream plain;
    const auto fault = write_product(product, plain);
    lay_out_like_ground_segment(plain.view(), product.s_description, source.options().seed, out);
    return fault;
  });
  if (error != 0 || !out) throw std::runtime_error("the annotation cannot be written");
}

}  // namespace simulate
