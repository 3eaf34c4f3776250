#pragma once

#include <string>

#include "gridkit/export.h"

namespace gridkit {

// What to do where a file of the wanted name is there already.
enum class Existing { replace, refuse };

// A file under way: it has a temporary name beside its target (TARGET.partNUMBER) until it is
// complete, and is removed when it never gets that far. So whatever ends the work, nothing half
// done has the target's name; only a process that is killed leaves the temporary file behind.
//
// A target that is a symbolic link stands for the file it points to. Where the target is a folder,
// a device or anything else but a regular file, it is refused.
class GRIDKIT_API PartialFile {
 public:
  // Creates the empty temporary file. Throws Error that says in words why it cannot.
  explicit PartialFile(const std::string& target, Existing existing = Existing::replace);
  PartialFile(const PartialFile&) = delete;
  PartialFile& operator=(const PartialFile&) = delete;
  ~PartialFile();

  const std::string& path() const { return path_; }

  // Gives the file its name. Throws Error, also where a file of that name has appeared since and
  // is not to be replaced.
  void complete();

  // Removes what has the target's name: the file that is to be replaced, or this one after it was
  // completed.
  void remove_target() noexcept;

 private:
  std::string target_;
  std::string path_;
  Existing existing_;
  bool completed_ = false;
};

}  // namespace gridkit
