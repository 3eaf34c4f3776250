#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "gridkit/samples.h"

// The layers of a product that is open over its samples alone.

namespace gridkit {

struct SampledLayer {
  std::string name;
  std::size_t image = 0;  // number of the image in its product
  SampleForm form = SampleForm::magnitude16;
  std::int32_t width = 0;
  std::int32_t height = 0;

  const char* pixel_type() const { return form == SampleForm::phase16 ? "s16" : "u16"; }
};

inline constexpr std::int32_t sampled_block_size = 64;

// In the order of the plug-in's list, those alone that are made of an image's samples.
std::vector<SampledLayer> sampled_layers(const Samples& samples);
std::vector<std::string> names_of(const std::vector<SampledLayer>& layers);

// The layer of that name. Throws Error that leads with the product's path.
SampledLayer find_sampled_layer(const Samples& samples, const std::string& path,
                                const std::string& name);

// A block of sampled_block_size lines and columns; what lies past the image's edges stays as it is.
// False where the block lies outside the image. Throws SampleError.
bool read_sampled_block(const Samples& samples, const SampledLayer& layer, std::int32_t row,
                        std::int32_t column, std::vector<std::uint16_t>& pixels);

}  // namespace gridkit
