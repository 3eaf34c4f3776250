#include "gridkit/layer_map.h"

namespace gridkit {

LayerMap map_of(const Layer& layer) try {
  return {layer.map_info(), {}};
} catch (const Error& error) {
  return {std::nullopt, error.sentence()};
}

}  // namespace gridkit
