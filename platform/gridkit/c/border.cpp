#include "gridkit/c/border.h"

#include <algorithm>
#include <cstdlib>
#include <new>

// What gridkit.h keeps to itself.
struct gridkit_error {
  gridkit_Code code = gridkit_OurFault;
  std::string message;
  std::string path;
  std::string element;
  std::int64_t line = 0;
  std::int64_t image_line = -1;
};

namespace gridkit::c {

namespace {

// The error that needs no memory. It is never written to and never freed.
gridkit_error* out_of_memory() noexcept {
  // Short enough to lie in the string itself.
  static gridkit_error error{gridkit_NoMemory, "out of memory", {}, {}, 0, -1};
  return &error;
}

std::int32_t store(gridkit_error** error, const Fault& fault) {
  if (error != nullptr) {
    *error = new gridkit_error{fault.code,    fault.what(), fault.path,
                               fault.element, fault.line,   fault.image_line};
  }
  return fault.code;
}

std::int32_t store_current(gridkit_error** error, gridkit_Code kind) {
  try {
    throw;
  } catch (const Fault& fault) {
    return store(error, fault);
  } catch (const SampleError& failure) {
    return store(error, Fault(failure));
  } catch (const Cancelled& cancelled) {
    return store(error, Fault(gridkit_Cancelled, cancelled.what()));
  } catch (const Error& failure) {
    return store(error, Fault(kind, failure.sentence()));
  } catch (const std::bad_alloc&) {
    throw;
  } catch (const std::exception& failure) {
    return store(error, Fault(gridkit_OurFault, failure.what()));
  } catch (...) {
    return store(error, Fault(gridkit_OurFault, "an unknown failure"));
  }
}

}  // namespace

Fault::Fault(const SampleError& error)
    : std::runtime_error(error.what()),
      code(static_cast<gridkit_Code>(error.code())),
      path(error.path()),
      element(error.element()),
      line(error.text_line()),
      image_line(error.image_line()) {}

std::int32_t tell_failure(gridkit_error** error, gridkit_Code kind) noexcept {
  try {
    return store_current(error, kind);
  } catch (...) {
    if (error != nullptr) *error = out_of_memory();
    return gridkit_NoMemory;
  }
}

void refuse_null(const char* name) {
  throw Fault(gridkit_WrongUse, std::string(name) + " is null");
}

void check_filled(const void* target, const char* name) {
  require(target, name);
  std::size_t size = 0;
  std::memcpy(&size, target, sizeof size);
  constexpr std::size_t largest = 65536;
  if (size >= sizeof size && size <= largest) return;
  throw Fault(gridkit_WrongUse, std::string(name) + " has the size " + std::to_string(size) +
                                    "; set its member size to its sizeof");
}

std::size_t known_bytes(const void* given, std::size_t own_size, const char* name) {
  check_filled(given, name);
  std::size_t size = 0;
  std::memcpy(&size, given, sizeof size);
  const auto* bytes = static_cast<const unsigned char*>(given);
  const bool says_more = size > own_size && std::any_of(bytes + own_size, bytes + size,
                                                        [](unsigned char b) { return b != 0; });
  if (says_more) {
    throw Fault(
        gridkit_WrongUse,
        std::string(name) + " asks for what only a later version of the " + "library knows");
  }
  return std::min(size, own_size);
}

bool chosen(std::int32_t choice, bool otherwise, const char* name) {
  switch (choice) {
    case gridkit_Default:
      return otherwise;
    case gridkit_Yes:
      return true;
    case gridkit_No:
      return false;
    default:
      throw Fault(gridkit_WrongUse,
                  std::string(name) + " is " + std::to_string(choice) + ", which is no choice");
  }
}

void* allocate(std::size_t bytes) {
  void* memory = std::malloc(std::max<std::size_t>(bytes, 1));
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}

char* copied_text(const std::string& text) {
  auto* copy = static_cast<char*>(allocate(text.size() + 1));
  std::memcpy(copy, text.c_str(), text.size() + 1);
  return copy;
}

}  // namespace gridkit::c

int32_t gridkit_error_code(const gridkit_error* error) {
  return error == nullptr ? gridkit_Done : error->code;
}

const char* gridkit_error_message(const gridkit_error* error) {
  return error == nullptr ? "" : error->message.c_str();
}

const char* gridkit_error_path(const gridkit_error* error) {
  return error == nullptr ? "" : error->path.c_str();
}

const char* gridkit_error_element(const gridkit_error* error) {
  return error == nullptr ? "" : error->element.c_str();
}

int64_t gridkit_error_line(const gridkit_error* error) {
  return error == nullptr ? 0 : error->line;
}

int64_t gridkit_error_image_line(const gridkit_error* error) {
  return error == nullptr ? -1 : error->image_line;
}

void gridkit_error_free(gridkit_error* error) {
  if (error != gridkit::c::out_of_memory()) delete error;
}

void gridkit_free(void* memory) {
  std::free(memory);
}
