#pragma once

#include <cstdint>
#include <cstdlib>
#include <string>
#include <type_traits>

#include "binding/description.h"
#include "lmx/datetime.h"

namespace binding {

// Calls `visit(std::type_identity<T>())` with the C++ type T that holds a value of the schema's
// type, and returns what it returns: the one place that knows them all.
template <class Visitor>
decltype(auto) with_value_type(ValueType type, Visitor visit) {
  switch (type) {
    case ValueType::string:
      return visit(std::type_identity<std::string>());
    case ValueType::float64:
      return visit(std::type_identity<double>());
    case ValueType::float32:
      return visit(std::type_identity<float>());
    case ValueType::int32:
      return visit(std::type_identity<std::int32_t>());
    case ValueType::uint32:
      return visit(std::type_identity<std::uint32_t>());
    case ValueType::int64:
      return visit(std::type_identity<std::int64_t>());
    case ValueType::uint64:
      return visit(std::type_identity<std::uint64_t>());
    case ValueType::uint8:
      return visit(std::type_identity<std::uint8_t>());
    case ValueType::boolean:
      return visit(std::type_identity<bool>());
    case ValueType::date_time:
      return visit(std::type_identity<lmx::c_datetime>());
  }
  std::abort();  // there is no other type
}

}  // namespace binding
