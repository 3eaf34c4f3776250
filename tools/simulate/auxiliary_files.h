#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tools/simulate/scene.h"
#include "tools/simulate/synthesis.h"

namespace simulate {

// The product's files beside its annotation and images. Each preview pixel stands for a square of
// image pixels, each node of the mapping grid for a point every so many lines and samples.
inline constexpr std::int32_t preview_reduction = 16;
inline constexpr std::int32_t grid_step = 100;

// Sizes by rule, so that the annotation and the files agree.
inline std::int32_t preview_size(std::int32_t pixels) {
  return pixels / preview_reduction;
}
inline std::int32_t grid_size(std::int32_t pixels) {
  return (pixels - 1) / grid_step + 1;
}

// Name of a polarisation's quicklook in PREVIEW.
std::string quicklook_name(const std::string& polarisation, const std::string& beam);

// Quicklooks, 16-bit; composite, browse image and map plot, 8-bit grey means of all images. Black
// throughout without any image. `folder` is PREVIEW, and `images` has one for each polarisation or
// none. Throws std::exception when a file cannot be written.
void write_previews(const std::string& folder, const Scene& scene, const std::string& beam,
                    const std::vector<Synthesis>& images);

// The raster's time since the scene's start and range time since the nearest one of each node, as
// pairs of 32-bit floating numbers, most significant byte first, line by line.
void write_mapping_grid(const std::string& path, const Scene& scene);

}  // namespace simulate
