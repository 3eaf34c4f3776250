#include "gridkit/host/sampled_layer.h"

#include <algorithm>
#include <limits>
#include <map>

namespace gridkit {

namespace {

// Layers count their pixels in 32 bits.
bool fits(const SampleImage& image) {
  constexpr std::int64_t most = std::numeric_limits<std::int32_t>::max();
  return image.lines <= most && image.samples <= most;
}

}  // namespace

std::vector<SampledLayer> sampled_layers(const Samples& samples) {
  std::map<std::int32_t, SampledLayer> by_place;
  const auto& images = samples.images();
  for (std::size_t i = 0; i < images.size(); ++i) {
    const SampleImage& image = images[i];
    if (!fits(image)) continue;
    const auto width = static_cast<std::int32_t>(image.samples);
    const auto height = static_cast<std::int32_t>(image.lines);
    if (image.magnitude_layer) {
      by_place[*image.magnitude_layer] = {image.magnitude_layer_name, i, SampleForm::magnitude16,
                                          width, height};
    }
    if (image.phase_layer) {
      by_place[*image.phase_layer] = {image.phase_layer_name, i, SampleForm::phase16, width,
                                      height};
    }
  }
  std::vector<SampledLayer> layers;
  layers.reserve(by_place.size());
  for (auto& [place, layer] : by_place) layers.push_back(layer);
  return layers;
}

std::vector<std::string> names_of(const std::vector<SampledLayer>& layers) {
  std::vector<std::string> names;
  names.reserve(layers.size());
  for (const SampledLayer& layer : layers) names.push_back(layer.name);
  return names;
}

SampledLayer find_sampled_layer(const Samples& samples, const std::string& path,
                                const std::string& name) {
  const auto layers = sampled_layers(samples);
  const auto found = std::find_if(layers.begin(), layers.end(),
                                  [&](const SampledLayer& layer) { return layer.name == name; });
  if (found == layers.end()) throw Error(path + ": no layer " + name);
  return *found;
}

bool read_sampled_block(const Samples& samples, const SampledLayer& layer, std::int32_t row,
                        std::int32_t column, std::vector<std::uint16_t>& pixels) {
  constexpr std::int64_t size = sampled_block_size;
  const std::int64_t line = row * size;
  const std::int64_t sample = column * size;
  if (row < 0 || column < 0 || line >= layer.height || sample >= layer.width) return false;
  const SampleWindow window{line, sample, std::min(size, layer.height - line),
                            std::min(size, layer.width - sample)};
  constexpr auto line_stride = static_cast<std::int64_t>(size * sizeof(std::uint16_t));
  samples.read(layer.image, window, {layer.form}, {pixels.data(), line_stride});
  return true;
}

}  // namespace gridkit
