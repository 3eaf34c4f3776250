#pragma once

#include <cstddef>

#include "gridkit/records/record_design.h"

namespace gridkit {

// A record in memory, laid out as a C struct of the design's fields, to its encoded form.

// The bytes of the encoded form. Throws Error for a vector with a negative count or without its
// elements, and beyond largest_record.
std::size_t encoded_size(const RecordDesign& design, const void* object);

// Writes as many bytes as encoded_size says, which must not have thrown.
void encode_object(const RecordDesign& design, const void* object, std::byte* encoded);

}  // namespace gridkit
