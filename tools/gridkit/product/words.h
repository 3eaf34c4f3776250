#pragma once

#include <cstddef>
#include <string>

#include "lmx/datetime.h"

// What annotations say in codes and numbers, in words.

// "StripMap (SM)" of "SM"; a code of another mode as it is.
std::string imaging_mode_in_words(const std::string& code);

// "2008-03-12 05:17:46.250000", without a mark of the zone, of "2008-03-12T05:17:46.250000Z".
std::string time_in_words(std::string time);
std::string time_in_words(const lmx::c_datetime& time);

// With so many digits after the point; never "-0.0".
std::string number_in_words(double value, int decimals);

// In as few characters as read back to the same bits.
std::string shortest_number(double value);

// The texts that `get` gives for 0 to size - 1, with commas between; empty ones are passed over.
template <class Get>
std::string joined(std::size_t size, Get get) {
  std::string text;
  for (std::size_t i = 0; i < size; ++i) {
    const std::string part = get(i);
    if (part.empty()) continue;
    if (!text.empty()) text += ", ";
    text += part;
  }
  return text;
}
