#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <vector>

namespace gridkit {

// A function of an image's lines and samples, interpolated bilinearly between the nodes of a mesh.
class GainMesh {
 public:
  using Function = std::function<double(double line, double sample)>;

  // Where the function may bend, along each axis; those outside the image are left out.
  struct Knots {
    std::vector<double> lines;
    std::vector<double> samples;
  };

  // Over an image of that size, with every stretch between knots halved until the interpolated
  // value is within `precision` of the exact one, relatively, halfway between all nodes. Throws
  // Error where that takes more than 2^20 nodes, and for values that are not finite and above 0.
  GainMesh(std::int64_t lines, std::int64_t samples, const Knots& knots, const Function& exact,
           double precision);

  // The places of nodes along a line, rising; the first is 0 and the last is the last sample.
  std::span<const double> samples() const { return samples_; }

  // The values at those places of a line, as many as there are.
  void at_line(double line, std::span<double> values) const;

 private:
  double at(double line, double sample) const;
  double largest_error(const Function& exact, bool between_lines) const;
  void fill(const Function& exact);

  std::vector<double> lines_;
  std::vector<double> samples_;
  std::vector<double> values_;  // [lines][samples]
};

}  // namespace gridkit
