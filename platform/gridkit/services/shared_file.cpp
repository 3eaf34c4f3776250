#include "gridkit/shared_file.h"

#include <cerrno>
#include <cstdint>
#include <memory>
#include <new>
#include <string>
#include <utility>

#include <sys/stat.h>
#include <unistd.h>

#include "gridkit/os_error.h"
#include "gridkit/services/fail.h"
#include "gridkit/services/open_scope.h"
#include "gridkit/services/regular_file.h"

struct gkf_SharedFile {
  gridkit::Descriptor file;
};

gkf_SharedFile* gkf_SharedOpen(const char* path, gke_Report** err) try {
  constexpr const char* word = "gkf_SharedOpen";
  if (path == nullptr) {
    gridkit::fail(err, word, {"no path"});
    return nullptr;
  }
  if (const std::string refusal = gridkit::refusal_to_open(path); !refusal.empty()) {
    gridkit::fail(err, word, {refusal});
    return nullptr;
  }
  gridkit::Descriptor opened = gridkit::open_regular_file(path, false);
  if (!opened.is_open()) {
    const int reason = errno;
    gridkit::fail(err, word, {gridkit::shown_path(path), ": ", gridkit::os_error_in_words(reason)});
    return nullptr;
  }
  auto file = std::make_unique<gkf_SharedFile>();
  file->file = std::move(opened);
  return file.release();
} catch (const std::bad_alloc&) {
  gridkit::fail(err, "gkf_SharedOpen", {"out of memory"});
  return nullptr;
}

void gkf_SharedClose(gkf_SharedFile* file) {
  delete file;
}

int64_t gkf_SharedSize(const gkf_SharedFile* file, gke_Report** err) {
  struct stat found {};
  if (file != nullptr && ::fstat(file->file.get(), &found) == 0) return found.st_size;
  const int reason = errno;
  gridkit::fail(err, "gkf_SharedSize",
                {file == nullptr ? "no file" : gridkit::os_error_in_words(reason)});
  return -1;
}

int64_t gkf_SharedRead(const gkf_SharedFile* file, void* buffer, int64_t bytes, int64_t offset,
                       gke_Report** err) {
  constexpr const char* word = "gkf_SharedRead";
  if (file == nullptr || bytes < 0 || offset < 0) {
    gridkit::fail(err, word, {file == nullptr ? "no file" : "a negative offset or count"});
    return -1;
  }
  auto* target = static_cast<char*>(buffer);
  std::int64_t done = 0;
  while (done < bytes) {
    const auto wanted = static_cast<std::size_t>(bytes - done);
    const ssize_t got = ::pread(file->file.get(), target + done, wanted, offset + done);
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) {
      const int reason = errno;
      gridkit::fail(err, word, {gridkit::os_error_in_words(reason)});
      return -1;
    }
    if (got == 0) break;
    done += got;
  }
  return done;
}
