#include "gridkit/partial_file.h"

#include <filesystem>
#include <system_error>

#include <unistd.h>

#include "gridkit/error.h"

namespace gridkit {

PartialFile::PartialFile(const std::string& target)
    : target_(target), path_(target + ".part" + std::to_string(::getpid())) {}

PartialFile::~PartialFile() {
  std::error_code ignored;
  if (!completed_) std::filesystem::remove(path_, ignored);
}

void PartialFile::complete() {
  std::error_code failed;
  std::filesystem::rename(path_, target_, failed);
  if (failed) throw Error(target_ + ": cannot be written: " + failed.message());
  completed_ = true;
}

}  // namespace gridkit
