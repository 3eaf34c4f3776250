#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "gridkit/records/record_design.h"

namespace gridkit {

// A vector as a record in memory holds it.
struct VectorInMemory {
  std::int32_t count;
  const double* elements;
};

// Where a C compiler puts the design's fields in a struct of their types: each at the next multiple
// of its alignment. Byte offsets, in the order of the fields.
std::vector<std::size_t> field_offsets(const RecordDesign& design);

}  // namespace gridkit
