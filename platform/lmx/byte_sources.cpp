#include "lmx/byte_sources.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <system_error>

namespace lmx {

file_source::file_source(const char* file_name) {
  std::error_code ignored;
  if (file_name == nullptr || !std::filesystem::is_regular_file(file_name, ignored)) return;
  file_.reset(std::fopen(file_name, "rb"));
  // The reader asks for whole chunks, so a second buffer would only copy.
  if (file_ != nullptr) std::setvbuf(file_.get(), nullptr, _IONBF, 0);
}

std::ptrdiff_t file_source::read(char* buffer, std::size_t size) {
  if (file_ == nullptr) return 0;
  const std::size_t got = std::fread(buffer, 1, size, file_.get());
  if (got == 0 && std::ferror(file_.get()) != 0) return -1;
  return static_cast<std::ptrdiff_t>(got);
}

std::ptrdiff_t memory_source::read(char* buffer, std::size_t size) {
  const std::size_t count = std::min(size, left_);
  if (count > 0) std::memcpy(buffer, data_, count);
  data_ += count;
  left_ -= count;
  return static_cast<std::ptrdiff_t>(count);
}

}  // namespace lmx
