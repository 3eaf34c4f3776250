#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "gridkit/export.h"
#include "gridkit/product.h"
#include "gridkit/radiometry.h"
#include "gridkit/samples.h"

namespace gridkit {

// What is asked of an image's radiometry.
struct RadiometryRequest {
  Backscatter quantity = Backscatter::beta0;
  bool subtract_noise = false;
};

// The radiometry of an image of a product, from what the product publishes: its calibration factor,
// noise through the companion, and angles of incidence from the product's geolocation grid; where
// it has none, from the published sensor model on the ellipsoid at the scene's average height.
// Throws Error in one sentence where the product lacks what is asked for, as images on a map and
// single bursts lack angles and noise times.
GRIDKIT_API std::shared_ptr<const Radiometry> radiometry_of(const Product& product,
                                                            const Samples& samples,
                                                            std::size_t image,
                                                            const RadiometryRequest& request);

// The same for a layer, by the calibration factor of its own image. Noise takes a companion that
// knows which image the layer is made of.
GRIDKIT_API std::shared_ptr<const Radiometry> radiometry_of(const Product& product,
                                                            const Layer& layer, double factor,
                                                            const RadiometryRequest& request);

// The angles of incidence over an image of that size, as radiometry takes them. Throws Error where
// they are not known.
GRIDKIT_API std::shared_ptr<const Incidence> incidence_of(const Product& product,
                                                          std::int64_t lines, std::int64_t samples);

// The angles of incidence over the images that a product's layers show.
struct ImageIncidence {
  std::shared_ptr<const Incidence> angles;
  std::int64_t lines = 0;
  std::int64_t samples = 0;
  double near_degrees = 0;  // at the ends of the middle line
  double far_degrees = 0;
};

// Throws Error where they are not known.
GRIDKIT_API ImageIncidence incidence_of(const Product& product);

}  // namespace gridkit
