#pragma once

#include <cstdint>
#include <ostream>
#include <string_view>

#include "binding/description.h"

namespace simulate {

// Copies an annotation as the annotation classes write it, one element a line, into the looks of
// the ground segment's: floating numbers with 17 decimals and an exponent of two digits, attributes
// in any order, some lines out of line. The values stay what they are, bit by bit; so do the first
// lines, which recognition reads. What varies depends on the seed and the line's number alone.
//
// `product` describes the root element, level1Product, and tells which numbers are floating.
void lay_out_like_ground_segment(std::string_view annotation,
                                 const binding::ClassDescription& product, std::uint64_t seed,
                                 std::ostream& out);

}  // namespace simulate
