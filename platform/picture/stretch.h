#pragma once

#include <cstdint>
#include <span>
#include <vector>

// Values of a picture as numbers of colours: 0 where there is no data, else 1 to 255.
inline constexpr int data_colours = 255;

// The values that get the first and the last colour; those beyond get them too.
struct Stretch {
  double low = 0;
  double high = 0;
};

// The shares of the values that lie below a stretch's ends, in percent.
struct Percentiles {
  double low = 2;
  double high = 98;
};

// The stretch between two percentiles of positive values; those that are not a number are left out.
// Counted in a histogram of fixed size whose steps are a 1/1024 of the value, which is how close
// the ends come. Zeros where there is no value.
Stretch percentile_stretch(std::span<const float> values, const Percentiles& percentiles);

// Colours of values in linear steps between the stretch's ends.
std::vector<std::uint8_t> stretch_values(std::span<const float> values, const Stretch& stretch);

// Colours of angles in radians, from -pi to pi, in even steps around the circle.
std::vector<std::uint8_t> stretch_phases(std::span<const float> phases);
