#include "gridkit/records/record_layout.h"

namespace gridkit {

namespace {

struct Extent {
  std::size_t size;
  std::size_t alignment;
};

template <class Type>
constexpr Extent extent_of(std::size_t count = 1) {
  return {sizeof(Type) * count, alignof(Type)};
}

Extent extent_of(const RecordField& field) {
  switch (field.type) {
    case gkd_Enumeration:
    case gkd_Integer:
      return extent_of<std::int32_t>();
    case gkd_Character:
      return extent_of<char>();
    case gkd_Double:
      return extent_of<double>();
    case gkd_DoubleArray:
      return extent_of<double>(static_cast<std::size_t>(field.count));
    case gkd_DoubleVector:
      break;
  }
  return extent_of<VectorInMemory>();
}

}  // namespace

std::vector<std::size_t> field_offsets(const RecordDesign& design) {
  std::vector<std::size_t> offsets;
  offsets.reserve(design.fields.size());
  std::size_t end = 0;
  for (const RecordField& field : design.fields) {
    const Extent extent = extent_of(field);
    const std::size_t offset = (end + extent.alignment - 1) / extent.alignment * extent.alignment;
    offsets.push_back(offset);
    end = offset + extent.size;
  }
  return offsets;
}

}  // namespace gridkit
