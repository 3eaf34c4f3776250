#include "tools/gridkit/product/layer_map.h"

LayerMap map_of(const gridkit::Layer& layer) try {
  return {layer.map_info(), {}};
} catch (const gridkit::Error& error) {
  return {std::nullopt, error.sentence()};
}
