#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace gridkit {

// The number's bytes, most significant first.
constexpr std::array<std::byte, 4> big_endian(std::uint32_t number) {
  return {static_cast<std::byte>(number >> 24U), static_cast<std::byte>((number >> 16U) & 0xFFU),
          static_cast<std::byte>((number >> 8U) & 0xFFU), static_cast<std::byte>(number & 0xFFU)};
}

}  // namespace gridkit
