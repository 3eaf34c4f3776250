#pragma once

#include <optional>
#include <string>

#include "gridkit/export.h"
#include "gridkit/product.h"

namespace gridkit {

// A layer's place on a map, as far as it can be told: pixels are read all the same where it cannot.
struct LayerMap {
  std::optional<MapInfo> info;  // none where the layer lies on no map, or
  std::string not_known;        // where it should: why it is not known, one sentence
};

GRIDKIT_API LayerMap map_of(const Layer& layer);

}  // namespace gridkit
