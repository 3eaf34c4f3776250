#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace lmx {

// Where a document's bytes come from.
class ByteSource {
 public:
  virtual ~ByteSource() = default;
  // Fills `buffer` with the bytes from `offset` on. Their number, which is less than the buffer's
  // size only at the end; -1 when reading failed.
  virtual std::ptrdiff_t read(std::uint64_t offset, std::span<char> buffer) = 0;
  virtual bool is_open() const { return true; }
};

// A regular file. Anything else, and what cannot be opened, is not open and reads as empty.
class FileSource : public ByteSource {
 public:
  explicit FileSource(const char* file_name);
  FileSource(const FileSource&) = delete;
  FileSource& operator=(const FileSource&) = delete;
  ~FileSource() override;
  std::ptrdiff_t read(std::uint64_t offset, std::span<char> buffer) override;
  bool is_open() const override { return descriptor_ >= 0; }

 private:
  int descriptor_ = -1;
};

// A buffer of the caller's.
class MemorySource : public ByteSource {
 public:
  MemorySource(const char* data, std::size_t length) : data_(data, length) {}
  std::ptrdiff_t read(std::uint64_t offset, std::span<char> buffer) override;

 private:
  std::span<const char> data_;
};

}  // namespace lmx
