#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "gridkit/image_reader.h"
#include "gridkit/product.h"
#include "gridkit/samples.h"

namespace gridkit {

// Where a layer's pixels come from when they are made of samples: any window, on every core, and
// every pixel that the file holds, where a plug-in's blocks cannot reach some.
struct SampleRoad {
  Samples samples;
  std::size_t image;
  SampleForm form;
};

// The road to a layer; that of a product without its plug-in always has one. Nothing where the
// plug-in has no companion, the companion does not open the product, or it says of no complex image
// that the layer is made of it.
std::optional<SampleRoad> sample_road_to(const Product& product, const Layer& layer);

// Reads a window over it, as read_window tells; the window was checked. A line of which a part came
// has that part and zeros after it. Throws Error where the file cannot be read, and for windows
// that would be too many zeros.
std::vector<LineRange> read_over_samples(const SampleRoad& road, const Window& window,
                                         const MarkedLineSink& sink);

}  // namespace gridkit
