#pragma once

#include <ostream>

#include "binding/engine.h"
#include "lmx/writer.h"

// Writes a level1Product as the ground segment lays annotations out: no XML declaration, the root's
// start tag with its schema attributes alone on line 1, generalHeader on line 2, so that the fixed
// line positions of recognition hold. 0, or the first fault of writing.
template <class Product>
lmx::elmx_error write_product(const Product& product, std::ostream& out) {
  out << "<level1Product xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" "
         "xsi:noNamespaceSchemaLocation=\"SUPPORT/level1Product.xsd\">\n";
  constexpr int no_declaration = 0;
  lmx::c_xml_writer writer(out, no_declaration, "  ", "\n");
  writer.depth = 1;
  const lmx::elmx_error error = binding::write_content(Product::s_description, &product, writer);
  out << "</level1Product>\n";
  return error;
}
