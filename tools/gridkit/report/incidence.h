#pragma once

#include <string>

#include "gridkit/product.h"

namespace report {

// The angle of incidence across the swath, in the first, the middle and the last line, with a
// sentence that tells where it comes from; or why it is not known.
std::string draw_incidence(const gridkit::Product& product);

}  // namespace report
