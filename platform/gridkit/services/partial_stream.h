#pragma once

#include <cstddef>
#include <cstdio>
#include <memory>
#include <span>
#include <string>

#include "gridkit/partial_file.h"

namespace gridkit {

// A PartialFile that is written from its beginning to its end. Throws Error that tells the target
// and why.
class PartialStream {
 public:
  PartialStream(const std::string& target, Existing existing);

  void write(std::span<const std::byte> bytes);

  // All that was written is in the file.
  void close();

  // Gives the closed file its name.
  void complete() { file_.complete(); }

  void remove_target() noexcept { file_.remove_target(); }

 private:
  struct Closer {
    void operator()(std::FILE* file) const { std::fclose(file); }
  };

  std::string target_;
  PartialFile file_;
  std::unique_ptr<std::FILE, Closer> stream_;
};

}  // namespace gridkit
