#include "gridkit/services/regular_file.h"

#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>

namespace gridkit {

Descriptor open_regular_file(const char* path, bool for_writing) noexcept {
  const int access = for_writing ? O_RDWR : O_RDONLY;
  Descriptor opened(::open(path, access | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
  struct stat status {};
  if (!opened.is_open() || ::fstat(opened.get(), &status) != 0) return Descriptor();
  if (S_ISREG(status.st_mode)) return opened;
  opened.close();
  errno = S_ISDIR(status.st_mode) ? EISDIR : EINVAL;
  return Descriptor();
}

}  // namespace gridkit
