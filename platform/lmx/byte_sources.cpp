#include "lmx/byte_sources.h"

#include <algorithm>
#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace lmx {

// The file is looked at once it is open, so what stands in its stead in between harms nothing; and
// opening a pipe this way does not wait for its other end.
FileSource::FileSource(const char* file_name) {
  if (file_name == nullptr) return;
  const int opened = ::open(file_name, O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
  if (opened < 0) return;
  struct stat status {};
  if (::fstat(opened, &status) == 0 && S_ISREG(status.st_mode)) {
    descriptor_ = opened;
  } else {
    ::close(opened);
  }
}

FileSource::~FileSource() {
  if (descriptor_ >= 0) ::close(descriptor_);
}

std::ptrdiff_t FileSource::read(std::uint64_t offset, std::span<char> buffer) {
  std::size_t filled = 0;
  while (descriptor_ >= 0 && filled < buffer.size()) {
    const ssize_t got = ::pread(descriptor_, buffer.data() + filled, buffer.size() - filled,
                                static_cast<off_t>(offset + filled));
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) return -1;
    if (got == 0) break;
    filled += static_cast<std::size_t>(got);
  }
  return static_cast<std::ptrdiff_t>(filled);
}

std::ptrdiff_t MemorySource::read(std::uint64_t offset, std::span<char> buffer) {
  const auto rest = data_.subspan(std::min<std::size_t>(offset, data_.size()));
  const auto part = rest.first(std::min(rest.size(), buffer.size()));
  std::copy(part.begin(), part.end(), buffer.begin());
  return static_cast<std::ptrdiff_t>(part.size());
}

}  // namespace lmx
