#pragma once

#include <utility>

#include <unistd.h>

namespace gridkit {

// A descriptor of a regular file, closed with its owner.
class Descriptor {
 public:
  explicit Descriptor(int number = -1) : number_(number) {}
  Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    std::swap(number_, other.number_);
    return *this;
  }
  ~Descriptor() { close(); }

  bool is_open() const { return number_ >= 0; }
  int get() const { return number_; }

  // Gives the descriptor away.
  int release() { return std::exchange(number_, -1); }

  // 0, or -1 when closing failed; the descriptor is gone in any case.
  int close() {
    const int number = std::exchange(number_, -1);
    return number < 0 ? 0 : ::close(number);
  }

 private:
  int number_;
};

// Opens a regular file for reading, or for reading and writing, without creating or emptying it. On
// failure the result is not open and errno tells why; anything but a regular file is EISDIR or
// EINVAL. Never waits for the other end of a pipe.
Descriptor open_regular_file(const char* path, bool for_writing) noexcept;

}  // namespace gridkit
