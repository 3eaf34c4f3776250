#include "gridkit/records/record_encoder.h"

#include <bit>
#include <cstdint>
#include <cstring>

#include "gridkit/error.h"
#include "gridkit/records/little_endian.h"
#include "gridkit/records/record_layout.h"

namespace gridkit {

namespace {

template <class Type>
Type read(const std::byte* memory) {
  Type value;
  std::memcpy(&value, memory, sizeof value);
  return value;
}

VectorInMemory read_vector(const std::byte* memory, const RecordField& field) {
  const auto vector = read<VectorInMemory>(memory);
  if (vector.count < 0) {
    throw Error("field " + quoted(field.name) + " has a count of " + std::to_string(vector.count));
  }
  if (vector.count > 0 && vector.elements == nullptr) {
    throw Error("field " + quoted(field.name) + " has a count of " + std::to_string(vector.count) +
                ", but no elements");
  }
  return vector;
}

// The encoded bytes of a field in memory.
std::size_t encoded_field_size(const RecordField& field, const std::byte* memory) {
  switch (field.type) {
    case gkd_Enumeration:
    case gkd_Integer:
      return 4;
    case gkd_Character:
      return 1;
    case gkd_Double:
      return 8;
    case gkd_DoubleArray:
      return 8 * static_cast<std::size_t>(field.count);
    case gkd_DoubleVector:
      break;
  }
  return 4 + 8 * static_cast<std::size_t>(read_vector(memory, field).count);
}

std::byte* put_integer(std::byte* to, std::int32_t value) {
  store_little_endian(std::bit_cast<std::uint32_t>(value), to);
  return to + 4;
}

std::byte* put_doubles(std::byte* to, const void* from, std::int32_t count) {
  const auto* memory = static_cast<const std::byte*>(from);
  for (std::int32_t i = 0; i < count; ++i) {
    store_little_endian(read<std::uint64_t>(memory), to);
    memory += sizeof(double);
    to += 8;
  }
  return to;
}

std::byte* put_field(std::byte* to, const RecordField& field, const std::byte* memory) {
  switch (field.type) {
    case gkd_Enumeration:
    case gkd_Integer:
      return put_integer(to, read<std::int32_t>(memory));
    case gkd_Character:
      *to = *memory;
      return to + 1;
    case gkd_Double:
      return put_doubles(to, memory, 1);
    case gkd_DoubleArray:
      return put_doubles(to, memory, field.count);
    case gkd_DoubleVector:
      break;
  }
  const VectorInMemory vector = read_vector(memory, field);
  return put_doubles(put_integer(to, vector.count), vector.elements, vector.count);
}

}  // namespace

std::size_t encoded_size(const RecordDesign& design, const void* object) {
  const auto* memory = static_cast<const std::byte*>(object);
  const std::vector<std::size_t> offsets = field_offsets(design);
  std::size_t size = 0;
  for (std::size_t i = 0; i < offsets.size(); ++i) {
    size += encoded_field_size(design.fields[i], memory + offsets[i]);
    if (size > largest_record) {
      throw Error("the encoded record would have more than " + std::to_string(largest_record) +
                  " bytes");
    }
  }
  return size;
}

void encode_object(const RecordDesign& design, const void* object, std::byte* encoded) {
  const auto* memory = static_cast<const std::byte*>(object);
  const std::vector<std::size_t> offsets = field_offsets(design);
  for (std::size_t i = 0; i < offsets.size(); ++i) {
    encoded = put_field(encoded, design.fields[i], memory + offsets[i]);
  }
}

}  // namespace gridkit
