#pragma once

#include <cstdint>
#include <cstring>
#include <exception>
#include <stdexcept>
#include <string>
#include <utility>

#include "gridkit/error.h"
#include "gridkit/gridkit.h"
#include "gridkit/samples.h"

// The border between the library's C++ and its functions in C (gridkit/gridkit.h).

namespace gridkit::c {

// A failure with all that an error of the C functions tells.
struct Fault : std::runtime_error {
  Fault(gridkit_Code what_kind, const std::string& message, std::string file = {})
      : std::runtime_error(message), code(what_kind), path(std::move(file)) {}
  explicit Fault(const SampleError& error);

  gridkit_Code code;
  std::string path;
  std::string element;
  std::int64_t line = 0;
  std::int64_t image_line = -1;
};

// The failure that is being handled, as a code, and as an error where one is asked for. A plain
// Error has the code `kind`.
std::int32_t tell_failure(gridkit_error** error, gridkit_Code kind) noexcept;

// Does a function's work; what it throws becomes its error.
template <class Work>
std::int32_t contain(gridkit_error** error, gridkit_Code kind, Work work) noexcept {
  if (error != nullptr) *error = nullptr;
  try {
    work();
    return gridkit_Done;
  } catch (...) {
    return tell_failure(error, kind);
  }
}

// Throws the fault of wrong use unless the argument is there.
[[noreturn]] void refuse_null(const char* name);
inline void require(const void* argument, const char* name) {
  if (argument == nullptr) refuse_null(name);
}

// What a caller's struct holds, as far as this library knows it. Throws the fault of wrong use for
// a size that is none, and for members of a later version that are not 0.
std::size_t known_bytes(const void* given, std::size_t own_size, const char* name);

template <class Struct>
Struct taken(const Struct* given, const char* name) {
  Struct own{};
  if (given != nullptr) {
    std::memcpy(static_cast<void*>(&own), given, known_bytes(given, sizeof own, name));
  }
  own.size = sizeof own;
  return own;
}

// Checks a struct that is to be filled, and fills as much of it as it is large.
void check_filled(const void* target, const char* name);
template <class Struct>
void fill(Struct* target, const Struct& filled) {
  const std::size_t size = target->size;
  std::memcpy(static_cast<void*>(target), &filled, size < sizeof filled ? size : sizeof filled);
  target->size = size;
}

// The answer to a choice that is `otherwise` by default. Throws the fault of wrong use.
bool chosen(std::int32_t choice, bool otherwise, const char* name);

// Memory that gridkit_free takes. Throws std::bad_alloc.
void* allocate(std::size_t bytes);
char* copied_text(const std::string& text);

}  // namespace gridkit::c
