#include "gridkit/services/regular_file.h"

#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>

namespace gridkit {

descriptor open_regular_file(const char* path, bool for_writing) noexcept {
  const int access = for_writing ? O_RDWR : O_RDONLY;
  descriptor opened(::open(path, access | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
  struct stat status {};
  if (!opened.is_open() || ::fstat(opened.get(), &status) != 0) return descriptor();
  if (S_ISREG(status.st_mode)) return opened;
  opened.close();
  errno = S_ISDIR(status.st_mode) ? EISDIR : EINVAL;
  return descriptor();
}

}  // namespace gridkit
