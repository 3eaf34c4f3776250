#pragma once

#include <cstdio>
#include <memory>

#include "lmx/token_stream.h"

namespace lmx {

// A regular file. Anything else, and what cannot be opened, is not open and reads as empty.
class file_source : public byte_source {
 public:
  explicit file_source(const char* file_name);
  std::ptrdiff_t read(char* buffer, std::size_t size) override;
  bool is_open() const override { return file_ != nullptr; }

 private:
  struct closer {
    void operator()(std::FILE* file) const { std::fclose(file); }
  };
  std::unique_ptr<std::FILE, closer> file_;
};

// A buffer of the caller's.
class memory_source : public byte_source {
 public:
  memory_source(const char* data, std::size_t length) : data_(data), left_(length) {}
  std::ptrdiff_t read(char* buffer, std::size_t size) override;

 private:
  const char* data_;
  std::size_t left_;
};

}  // namespace lmx
