#include "gridkit/whole_file.h"

#include <cerrno>
#include <cstdio>
#include <memory>

#include "gridkit/os_error.h"
#include "gridkit/partial_file.h"

namespace gridkit {

namespace {

struct closer {
  void operator()(std::FILE* file) const { std::fclose(file); }
};

[[noreturn]] void refuse(const std::string& path) {
  throw Error(path + ": cannot be written: " + os_error_in_words(errno));
}

}  // namespace

void write_whole_file(const std::string& path, std::span<const std::byte> bytes, bool replace) {
  PartialFile file(path, replace ? Existing::replace : Existing::refuse);
  std::unique_ptr<std::FILE, closer> stream(std::fopen(file.path().c_str(), "wb"));
  if (stream == nullptr) refuse(path);
  if (std::fwrite(bytes.data(), 1, bytes.size(), stream.get()) != bytes.size()) refuse(path);
  if (std::fclose(stream.release()) != 0) refuse(path);
  file.complete();
}

}  // namespace gridkit
