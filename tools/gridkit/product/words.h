#pragma once

#include <cstddef>
#include <string>

#include "lmx/datetime.h"

// What annotations say in codes and numbers, in words.

// "StripMap (SM)" of "SM"; a code of another mode as it is.
std::string imaging_mode_in_words(const std::string& code);

// "2008-03-12 05:17:46.250000", without a mark of the zone.
std::string time_in_words(const lmx::c_datetime& time);

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
