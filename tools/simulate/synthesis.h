#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "tools/simulate/pixel.h"
#include "tools/simulate/shading.h"

namespace simulate {

// One complex sample in digital numbers.
struct Sample {
  float i;
  float q;
};

// Makes an image line by line: speckle over a textured scene, and the responses of point targets.
// Each line depends on the seed, the image's number and the line alone, so lines can be made in any
// order and come out the same every time.
class Synthesis {
 public:
  // `spacing` is that of the pixels, and `targets` are where point targets
  // appear. Without a shading the ground is even.
  Synthesis(GroundSpacing spacing, std::vector<Pixel> targets, std::uint64_t seed,
            std::int32_t image, std::shared_ptr<const Shading> shading = nullptr);

  // Complex samples of a line, [samples].
  void complex_line(std::int32_t line, std::span<Sample> samples) const;

  // Detected amplitudes of a line, four looks, [samples].
  void detected_line(std::int32_t line, std::span<float> amplitudes) const;

 private:
  double backscatter(std::int32_t line, std::size_t sample) const;
  void add_targets(std::int32_t line, std::span<Sample> samples) const;

  std::vector<Pixel> targets_;
  std::uint64_t seed_;
  GroundSpacing spacing_;
  std::shared_ptr<const Shading> shading_;
};

}  // namespace simulate
