#include "gridkit/partial_file.h"

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <system_error>

#include <fcntl.h>
#include <unistd.h>

#include "gridkit/error.h"
#include "gridkit/os_error.h"

namespace gridkit {

namespace {

namespace fs = std::filesystem;

constexpr int most_names = 100;
constexpr mode_t readable_by_umask = 0666;

[[noreturn]] void refuse(const std::string& target, const std::string& why) {
  throw Error(target + ": cannot be written: " + why);
}

// The file that the target stands for, checked to be none or a regular file.
fs::path resolve(const std::string& target, Existing existing) {
  std::error_code failed;
  const fs::file_status status = fs::status(target, failed);
  if (fs::is_directory(status)) refuse(target, "it is a folder; name the file to write");
  if (fs::exists(status) && !fs::is_regular_file(status)) refuse(target, "it is no regular file");
  if (fs::exists(status) && existing == Existing::refuse) throw Error(target + ": exists already");
  if (!fs::is_symlink(target, failed)) return target;
  fs::path path = fs::canonical(target, failed);
  if (failed == std::errc::no_such_file_or_directory) refuse(target, "a link to nowhere");
  if (failed) refuse(target, os_error_in_words(failed.value()));
  return path;
}

// Creates an empty file of a name that no other has, beside the target.
std::string create_beside(const std::string& target) {
  const std::string stem = target + ".part" + std::to_string(::getpid());
  for (int i = 0; i < most_names; ++i) {
    std::string path = i == 0 ? stem : stem + '-' + std::to_string(i);
    const int file =
        ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, readable_by_umask);
    if (file >= 0) {
      ::close(file);
      return path;
    }
    if (errno == EEXIST) continue;
    const int error = errno;
    const fs::path folder = fs::path(target).parent_path();
    std::error_code ignored;
    if (error == ENOENT && !fs::exists(folder, ignored)) {
      refuse(target, "there is no folder " + folder.string());
    }
    if (error == EACCES) {
      refuse(target, "no permission to write into " + (folder.empty() ? "." : folder.string()));
    }
    refuse(target, os_error_in_words(error));
  }
  refuse(target, "files named " + stem + " are in the way");
}

}  // namespace

PartialFile::PartialFile(const std::string& target, Existing existing)
    : target_(resolve(target, existing).string()),
      path_(create_beside(target_)),
      existing_(existing) {}

PartialFile::~PartialFile() {
  if (!completed_) ::unlink(path_.c_str());
}

void PartialFile::complete() {
  int result = -1;
  if (existing_ == Existing::refuse) {
    result = ::renameat2(AT_FDCWD, path_.c_str(), AT_FDCWD, target_.c_str(), RENAME_NOREPLACE);
    // Not every file system knows the call; a look first is the next best.
    if (result != 0 && (errno == EINVAL || errno == ENOSYS)) {
      if (::access(target_.c_str(), F_OK) == 0) {
        errno = EEXIST;
      } else {
        result = std::rename(path_.c_str(), target_.c_str());
      }
    }
  } else {
    result = std::rename(path_.c_str(), target_.c_str());
  }
  if (result != 0) {
    if (errno == EEXIST) throw Error(target_ + ": exists already");
    refuse(target_, os_error_in_words(errno));
  }
  completed_ = true;
}

void PartialFile::remove_target() noexcept {
  ::unlink(target_.c_str());
}

}  // namespace gridkit
