#include "gridkit/os_error.h"

#include <cerrno>
#include <system_error>

#include "gridkit/services/plain_locale.h"

namespace gridkit {

std::string os_error_in_words(int error) {
  switch (error) {
    case EACCES:
    case EPERM:
      return "no permission";
    case EDQUOT:
      return "the disk quota is used up";
    case EFBIG:
      return "the file would grow past the limit on file sizes";
    case EISDIR:
      return "it is a folder";
    case ENAMETOOLONG:
      return "the name is too long";
    case ENOENT:
      return "no such file or folder";
    case ENOSPC:
      return "the disk is full";
    case ENOTDIR:
      return "a part of its path is no folder";
    case EROFS:
      return "the file system is read-only";
    default: {
      const PlainLocale plain;
      return std::generic_category().message(error);
    }
  }
}

}  // namespace gridkit
