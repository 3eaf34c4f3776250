#pragma once

#include <cstddef>
#include <cstdint>

namespace gridkit {

// `count` pixels of a file's type as 64-bit floats; they do not overlap.
void widen(const std::uint8_t* from, double* to, std::size_t count);
void widen(const std::uint16_t* from, double* to, std::size_t count);
void widen(const std::int16_t* from, double* to, std::size_t count);

}  // namespace gridkit
