#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "tools/simulate/scene.h"

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
  Synthesis(const Scene& scene, std::vector<Target> targets, std::uint64_t seed,
            std::int32_t image);

  // Complex samples of a line, [samples].
  void complex_line(std::int32_t line, std::span<Sample> samples) const;

  // Detected amplitudes of a line, four looks, [samples].
  void detected_line(std::int32_t line, std::span<float> amplitudes) const;

 private:
  double backscatter(double along, double across) const;
  void add_targets(std::int32_t line, std::span<Sample> samples) const;

  std::vector<Target> targets_;
  std::uint64_t seed_;
  Pixel spacing_;  // m on ground
};

}  // namespace simulate
