#pragma once

#include <bit>
#include <concepts>
#include <cstddef>
#include <cstdint>

namespace gridkit {

// Unsigned integers as bytes, the least significant one first, whatever the machine's order.

template <std::unsigned_integral Number>
constexpr void store_little_endian(Number number, std::byte* bytes) {
  for (std::size_t i = 0; i < sizeof number; ++i) {
    bytes[i] = static_cast<std::byte>(number >> (8 * i) & 0xFF);
  }
}

template <std::unsigned_integral Number>
constexpr Number load_little_endian(const std::byte* bytes) {
  Number number = 0;
  for (std::size_t i = 0; i < sizeof number; ++i) {
    number |= static_cast<Number>(std::to_integer<Number>(bytes[i]) << (8 * i));
  }
  return number;
}

}  // namespace gridkit
