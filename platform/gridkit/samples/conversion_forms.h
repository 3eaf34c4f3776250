#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "gridkit/samples.h"

namespace gridkit {

// Why samples of that type have no such form; empty where they have it.
std::string refusal_of_form(SampleForm form, NativeType type);

// Which samples are converted: those of a line of the image, from a number of the window's line on.
struct LinePart {
  std::int64_t line = 0;
  std::size_t index = 0;
};

// Converts samples of a window from their native type, with working memory of its own. For one
// thread at a time.
class Converter {
 public:
  Converter(const Conversion& conversion, NativeType type, const SampleWindow& window);

  // `count` samples to as many of the form, without gaps.
  void convert(LinePart part, const std::byte* native, std::byte* converted, std::size_t count);

 private:
  void convert_some(LinePart part, const std::byte* native, std::byte* converted,
                    std::size_t count);
  void convert_powers(LinePart part, float* converted, std::size_t count);
  void convert_pairs(const std::int16_t* native, std::uint16_t* pixels, std::size_t count);
  void widen(const std::byte* native, float* floats, std::size_t count) const;
  void take_powers(const float* floats, std::size_t count);

  Conversion conversion_;
  NativeType type_;
  std::vector<std::int16_t> planes_;
  std::vector<float> floats_;
  std::vector<double> powers_;
  std::vector<double> weighed_;
  std::optional<RadiometricLines> radiometry_;
};

}  // namespace gridkit
