#include "gridkit/whole_file.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>

#include "gridkit/partial_file.h"

namespace gridkit {

namespace {

struct closer {
  void operator()(std::FILE* file) const { std::fclose(file); }
};

[[noreturn]] void refuse(const std::string& path) {
  throw Error(path + ": cannot be written: " + std::strerror(errno));
}

}  // namespace

void refuse_existing(const std::string& path, bool replace) {
  std::error_code ignored;
  if (!replace && std::filesystem::exists(path, ignored)) throw Error(path + ": exists already");
}

void write_whole_file(const std::string& path, std::span<const std::byte> bytes, bool replace) {
  refuse_existing(path, replace);
  PartialFile file(path);
  std::unique_ptr<std::FILE, closer> stream(std::fopen(file.path().c_str(), "wb"));
  if (stream == nullptr) refuse(path);
  if (std::fwrite(bytes.data(), 1, bytes.size(), stream.get()) != bytes.size()) refuse(path);
  if (std::fclose(stream.release()) != 0) refuse(path);
  file.complete();
}

}  // namespace gridkit
