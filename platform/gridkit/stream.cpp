#include <cerrno>
#include <cstdint>
#include <cstring>
#include <memory>
#include <new>

#include <unistd.h>

#include "gridkit/file.h"
#include "gridkit/regular_file.h"

// Reads by position, so a file that shrinks while it is open ends earlier and harms nothing.
struct gkf_Stream {
  gridkit::descriptor file;
  std::int64_t position = 0;
  bool at_end = false;
};

gkf_Stream* gkf_fopen(const char* path, const char* mode) {
  if (path == nullptr || mode == nullptr) return nullptr;
  if (std::strcmp(mode, "r") != 0 && std::strcmp(mode, "rb") != 0) return nullptr;
  std::unique_ptr<gkf_Stream> stream(new (std::nothrow) gkf_Stream);
  if (stream == nullptr) return nullptr;
  stream->file = gridkit::open_regular_file(path, false);
  return stream->file.is_open() ? stream.release() : nullptr;
}

int32_t gkf_fclose(gkf_Stream* stream) {
  const std::unique_ptr<gkf_Stream> ended(stream);
  return ended != nullptr && ended->file.close() == 0 ? 0 : -1;
}

int32_t gkf_fseeko(gkf_Stream* stream, int64_t offset, int32_t origin) {
  if (stream == nullptr || offset < 0 || origin != 0) return -1;
  stream->position = offset;
  stream->at_end = false;
  return 0;
}

size_t gkf_fread(void* buffer, size_t size, size_t count, gkf_Stream* stream) {
  if (stream == nullptr || buffer == nullptr || size == 0) return 0;
  if (count > static_cast<std::size_t>(INT64_MAX) / size) return 0;
  const std::size_t wanted = size * count;
  std::size_t got = 0;
  stream->at_end = false;
  while (got < wanted) {
    const ssize_t n = ::pread(stream->file.get(), static_cast<char*>(buffer) + got, wanted - got,
                              stream->position + static_cast<std::int64_t>(got));
    if (n < 0 && errno == EINTR) continue;
    if (n == 0) stream->at_end = true;
    if (n <= 0) break;
    got += static_cast<std::size_t>(n);
  }
  stream->position += static_cast<std::int64_t>(got);
  return got / size;
}

int32_t gkf_feof(gkf_Stream* stream) {
  return stream != nullptr && stream->at_end ? 1 : 0;
}
