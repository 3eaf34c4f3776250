#pragma once

#include <string>

namespace gridkit {

// A file under way: it has a temporary name beside its target until it is complete, and is removed
// when it never gets that far.
class PartialFile {
 public:
  explicit PartialFile(const std::string& target);
  PartialFile(const PartialFile&) = delete;
  PartialFile& operator=(const PartialFile&) = delete;
  ~PartialFile();

  const std::string& path() const { return path_; }

  // Gives the file its name, in place of whatever had it. Throws Error.
  void complete();

 private:
  std::string target_;
  std::string path_;
  bool completed_ = false;
};

}  // namespace gridkit
