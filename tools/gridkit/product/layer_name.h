#pragma once

#include <string>

#include "gridkit/product.h"

// What to say of a name that is not among the layers' own, empty for one that is.
std::string unknown_layer(const gridkit::Product& product, const std::string& name);
