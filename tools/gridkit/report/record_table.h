#pragma once

#include <string>

#include "gridkit/product.h"

namespace report {

// Every record that a product publishes beside its pixels as a section with a table: fields, values
// and, of the designs known here, units and meanings. Records come apart by their dictionaries
// alone. Throws gridkit::Error.
std::string record_tables(const gridkit::Product& product);

}  // namespace report
