#pragma once

#include "gridkit/companion.h"
#include "gridkit/product_facts.h"

namespace gridkit {

// What a companion tells of a product, in the host's own form.
ProductFacts facts_from(const gkc_ProductFacts& told);

}  // namespace gridkit
