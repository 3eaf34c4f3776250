#include "lmx/byte_sources.h"

#include <algorithm>
#include <cstring>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace lmx {

// The file is looked at once it is open, so what stands in its stead in between harms nothing; and
// opening a pipe this way does not wait for its other end.
file_source::file_source(const char* file_name) {
  if (file_name == nullptr) return;
  const int opened = ::open(file_name, O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
  if (opened < 0) return;
  struct stat status {};
  if (::fstat(opened, &status) == 0 && S_ISREG(status.st_mode)) {
    file_.reset(::fdopen(opened, "rb"));
  }
  if (file_ == nullptr) ::close(opened);
  // The reader asks for whole chunks, so a second buffer would only copy.
  if (file_ != nullptr) std::setvbuf(file_.get(), nullptr, _IONBF, 0);
}

std::ptrdiff_t file_source::read(char* buffer, std::size_t size) {
  if (file_ == nullptr) return 0;
  const std::size_t got = std::fread(buffer, 1, size, file_.get());
  if (got == 0 && std::ferror(file_.get()) != 0) return -1;
  return static_cast<std::ptrdiff_t>(got);
}

std::ptrdiff_t memory_source::read(char* buffer, std::size_t size) {
  const std::size_t count = std::min(size, left_);
  if (count > 0) std::memcpy(buffer, data_, count);
  data_ += count;
  left_ -= count;
  return static_cast<std::ptrdiff_t>(count);
}

}  // namespace lmx
