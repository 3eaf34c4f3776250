#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <ctime>
#include <memory>
#include <new>
#include <optional>
#include <span>

#include <sys/stat.h>
#include <unistd.h>

#include "gridkit/file.h"
#include "gridkit/preference.h"
#include "gridkit/services/open_scope.h"
#include "gridkit/services/page_cache.h"
#include "gridkit/services/regular_file.h"

namespace {

using gridkit::PageCache;

constexpr double default_megabytes = 64;
constexpr double most_megabytes = 4096;

// Longer reads gain nothing from a cache: they go straight into the caller's buffer.
constexpr std::size_t shortest_direct = 4096;

std::size_t preferred_cache_bytes() {
  const double megabytes =
      gkp_GetNumberPreference("gridkit", "stream_cache_megabytes", default_megabytes, nullptr);
  return static_cast<std::size_t>(std::clamp(megabytes, 0.0, most_megabytes) * 1048576);
}

bool is_same(const timespec& a, const timespec& b) {
  return a.tv_sec == b.tv_sec && a.tv_nsec == b.tv_nsec;
}

// Milliseconds, in steps of a few: reading this clock is no system call.
std::int64_t coarse_milliseconds() {
  timespec now{};
  ::clock_gettime(CLOCK_MONOTONIC_COARSE, &now);
  return std::int64_t{now.tv_sec} * 1000 + now.tv_nsec / 1000000;
}

// What a file looked like when it was looked at last, to tell whether held pages still hold.
class LastLook {
 public:
  // Looks at the file; whether it is not as it was. The size is asked for each time, which is
  // cheap; the times of change only when the last answer is a hundredth of a second old.
  bool finds_change(int file) {
    constexpr std::int64_t trusted_milliseconds = 10;
    const std::int64_t now = coarse_milliseconds();
    if (::lseek(file, 0, SEEK_END) == seen_.st_size && now - at_ < trusted_milliseconds) {
      return false;
    }
    struct stat found {};
    const bool failed = ::fstat(file, &found) != 0;
    const bool is_same_file = !failed && found.st_size == seen_.st_size &&
                              is_same(found.st_mtim, seen_.st_mtim) &&
                              is_same(found.st_ctim, seen_.st_ctim);
    seen_ = found;
    at_ = now;
    return !is_same_file;
  }

 private:
  struct stat seen_ {};
  std::int64_t at_ = INT64_MIN / 2;  // never
};

}  // namespace

// Reads by position, so a file that shrinks while it is open ends earlier and harms nothing. The
// end of the file and read errors are told by direct reads alone, never by what is held.
struct gkf_Stream {
  explicit gkf_Stream(std::size_t cache_bytes)
      : cache_(cache_bytes), most_credit_(static_cast<std::int64_t>(cache_bytes)) {}

  std::size_t read(std::byte* buffer, std::size_t wanted);
  void seek(std::int64_t offset);

  gridkit::Descriptor file;
  std::int64_t position = 0;
  bool at_end = false;
  std::uint64_t bytes_read = 0;

 private:
  std::size_t pread(std::byte* buffer, std::size_t wanted, std::int64_t offset);
  std::size_t read_direct(std::byte* buffer, std::size_t wanted, std::int64_t offset);
  std::size_t read_held(std::byte* buffer, std::size_t wanted);
  void fill(std::int64_t offset);

  PageCache cache_;
  LastLook look_;
  bool must_look_ = true;

  // Bytes that may be read in whole pages. Every page draws on it and every byte delivered adds
  // two, so a pattern that uses little of each page soon gets only what it asks for.
  static constexpr std::int64_t earned = 2;
  std::int64_t most_credit_;
  std::int64_t credit_ = most_credit_;
  int last_error_ = 0;
};

// Up to `wanted` bytes; fewer at the end of the file (last_error_ is 0) or on an error.
std::size_t gkf_Stream::pread(std::byte* buffer, std::size_t wanted, std::int64_t offset) {
  std::size_t got = 0;
  last_error_ = 0;
  while (got < wanted) {
    const ssize_t n =
        ::pread(file.get(), buffer + got, wanted - got, offset + static_cast<std::int64_t>(got));
    if (n < 0 && errno == EINTR) continue;
    if (n < 0) last_error_ = errno;
    if (n <= 0) break;
    got += static_cast<std::size_t>(n);
  }
  bytes_read += got;
  return got;
}

std::size_t gkf_Stream::read_direct(std::byte* buffer, std::size_t wanted, std::int64_t offset) {
  const std::size_t got = pread(buffer, wanted, offset);
  at_end = got < wanted && last_error_ == 0;
  return got;
}

// Brings the page that holds a place into the cache, if that may be and can be done.
void gkf_Stream::fill(std::int64_t offset) {
  constexpr auto page_bytes = std::int64_t{PageCache::page_bytes};
  if (credit_ < page_bytes) return;
  if (look_.finds_change(file.get())) cache_.forget();
  std::byte* page = cache_.place(offset);
  if (page == nullptr) return;
  const std::size_t got = pread(page, PageCache::page_bytes, offset - offset % page_bytes);
  credit_ -= static_cast<std::int64_t>(got);
  cache_.set_size(got);
}

std::size_t gkf_Stream::read_held(std::byte* buffer, std::size_t wanted) {
  if (must_look_ && look_.finds_change(file.get())) cache_.forget();
  must_look_ = false;
  std::size_t done = 0;
  while (done < wanted) {
    const std::int64_t offset = position + static_cast<std::int64_t>(done);
    const std::span<std::byte> rest(buffer + done, wanted - done);
    std::size_t n = cache_.read(offset, rest);
    if (n == 0) {
      fill(offset);
      n = cache_.read(offset, rest);
    }
    if (n == 0) return done + read_direct(rest.data(), rest.size(), offset);
    done += n;
  }
  return done;
}

std::size_t gkf_Stream::read(std::byte* buffer, std::size_t wanted) {
  at_end = false;
  const std::size_t got =
      wanted < shortest_direct ? read_held(buffer, wanted) : read_direct(buffer, wanted, position);
  position += static_cast<std::int64_t>(got);
  credit_ = std::min(most_credit_, credit_ + earned * static_cast<std::int64_t>(got));
  return got;
}

void gkf_Stream::seek(std::int64_t offset) {
  must_look_ = must_look_ || offset < position;
  position = offset;
  at_end = false;
}

gkf_Stream* gkf_fopen(const char* path, const char* mode) try {
  if (path == nullptr || mode == nullptr) return nullptr;
  if (std::strcmp(mode, "r") != 0 && std::strcmp(mode, "rb") != 0) return nullptr;
  if (!gridkit::refusal_to_open(path).empty()) return nullptr;
  std::unique_ptr<gkf_Stream> stream(new (std::nothrow) gkf_Stream(preferred_cache_bytes()));
  if (stream == nullptr) return nullptr;
  stream->file = gridkit::open_regular_file(path, false);
  return stream->file.is_open() ? stream.release() : nullptr;
} catch (const std::bad_alloc&) {
  return nullptr;
}

int32_t gkf_fclose(gkf_Stream* stream) {
  const std::unique_ptr<gkf_Stream> ended(stream);
  return ended != nullptr && ended->file.close() == 0 ? 0 : -1;
}

int32_t gkf_fseeko(gkf_Stream* stream, int64_t offset, int32_t origin) {
  if (stream == nullptr || offset < 0 || origin != 0) return -1;
  stream->seek(offset);
  return 0;
}

size_t gkf_fread(void* buffer, size_t size, size_t count, gkf_Stream* stream) {
  if (stream == nullptr || buffer == nullptr || size == 0) return 0;
  std::size_t wanted = 0;
  if (__builtin_mul_overflow(size, count, &wanted) || wanted > std::size_t{INT64_MAX}) return 0;
  const std::size_t got = stream->read(static_cast<std::byte*>(buffer), wanted);
  return got == wanted ? count : got / size;
}

int32_t gkf_feof(gkf_Stream* stream) {
  return stream != nullptr && stream->at_end ? 1 : 0;
}

int64_t gkf_StreamBytesRead(const gkf_Stream* stream) {
  return stream == nullptr ? 0 : static_cast<std::int64_t>(stream->bytes_read);
}
