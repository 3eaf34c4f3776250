#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>

// A regular file that lives in memory and has a path.
class MemoryFile {
 public:
  explicit MemoryFile(std::string_view content)
      : descriptor_(::memfd_create("input", MFD_CLOEXEC)) {
    if (descriptor_ < 0) throw std::runtime_error("no memory file");
    while (!content.empty()) {
      const ssize_t written = ::write(descriptor_, content.data(), content.size());
      if (written <= 0) throw std::runtime_error("the memory file cannot be written");
      content.remove_prefix(static_cast<std::size_t>(written));
    }
  }
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;
  ~MemoryFile() { ::close(descriptor_); }

  std::string path() const { return "/proc/self/fd/" + std::to_string(descriptor_); }

 private:
  int descriptor_;
};
